// reportcheck's commands. Adding one: its file (a Command and its handler,
// as ShowCommand.cpp), its declaration and its entry in the table below,
// and the file in CMakeLists.txt.
#pragma once

#include "reportcheck/CommandLine.h"

extern const Command kCheckCommand;
extern const Command kShowCommand;
extern const Command kDiffCommand;
extern const Command kCollectCommand;
extern const Command kFindingsCommand;
extern const Command kRulesCommand;
extern const Command kPageCommand;
extern const Command kRepairCommand;
extern const Command kRedactCommand;

// In the order reportcheck --help lists them. The first is the default:
// "reportcheck FILE..." is "reportcheck check FILE...".
inline const Command* const kCommands[] = {
    &kCheckCommand,
    &kShowCommand,
    &kDiffCommand,
    &kCollectCommand,
    &kFindingsCommand,
    &kRulesCommand,
    &kPageCommand,
    &kRepairCommand,
    &kRedactCommand,
};
