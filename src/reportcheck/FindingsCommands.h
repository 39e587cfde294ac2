// The commands of the findings rules and the report tables:
//   reportcheck findings [--json] [--rules DIR] [--min-severity LEVEL] PATH...
//   reportcheck collect --db FILE PATH...
//   reportcheck rules [--rules DIR]
// Each takes the whole command line (argv[1] is the command's name).
#pragma once

#include "reportcheck/ReportFiles.h"

namespace reportcheck {

int Findings(int argc, NativeChar* argv[]);
int CollectDatabase(int argc, NativeChar* argv[]);
int ListRules(int argc, NativeChar* argv[]);

}  // namespace reportcheck
