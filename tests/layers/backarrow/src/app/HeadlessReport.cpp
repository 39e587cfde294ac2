// The program reaching into reportcheck's reader: the check refuses it, so
// that the reader never ships in the program.
#include "app/HeadlessReport.h"

#include "collect/SystemReport.h"
#include "reader/ReportModel.h"
