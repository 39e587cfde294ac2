// reportcheck page [--against OLD] [--lang en|fr] [-o FILE] REPORT|FOLDER|DATABASE:
// one self-contained HTML page. Takes the whole command line (argv[1] is
// the command's name).
#pragma once

#include "reportcheck/ReportFiles.h"

namespace reportcheck {

int Page(int argc, NativeChar* argv[]);

}  // namespace reportcheck
