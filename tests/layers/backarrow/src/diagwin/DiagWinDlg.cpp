// A relative include is followed to where it leads: down is allowed, up is not.
#include "../app/MainDlg.h"
#include "../format/ReportSink.h"

#include <nlohmann/json.hpp>
