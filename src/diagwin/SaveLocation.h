// Where Save proposes to write the report, and what it remembers.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// The remembered folder, or "C:" when none is, followed by "\report.txt".
std::wstring ProposedReportPath(std::wstring_view rememberedFolder);

// The folder to remember for a chosen path: everything before its last
// backslash ("C:" for a file in the root of C:); nothing when it has none.
std::optional<std::wstring> FolderToRemember(std::wstring_view chosenPath);
