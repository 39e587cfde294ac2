// The pure report format reaching into the Windows collectors or the system:
// the check refuses both, so that a file's folder alone tells whether it is
// pure.
#include "format/ReportText.h"

#include <windows.h>

#include "collect/SystemReport.h"
#include "lang/Language.h"
