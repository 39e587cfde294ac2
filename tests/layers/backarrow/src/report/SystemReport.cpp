// A report file that reaches up into the application: the check refuses it.
#include "report/SystemReport.h"

#include "app/Elevation.h"
#include "w32/Scoped.h"
