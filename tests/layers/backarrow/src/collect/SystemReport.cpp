// A report file that reaches up into the application: the check refuses it.
#include "collect/SystemReport.h"

#include "app/Elevation.h"
#include "w32/Scoped.h"
