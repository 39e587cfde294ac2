// A relative include is followed to where it leads: down is allowed, up is not.
#include "../report/ReportSink.h"
#include "../app/MainDlg.h"

#include <nlohmann/json.hpp>
