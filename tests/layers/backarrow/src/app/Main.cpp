// Downward includes are allowed.
#include "diagwin/DiagWinDlg.h"
#include "lang/Language.h"
