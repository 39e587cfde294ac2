// Writing the report file.
#pragma once

#include <string>
#include <string_view>

#include "lang/Language.h"

// What the user is told, by Save or by the headless report, when
// WriteReportFile fails.
inline constexpr Bilingual kCannotOpenReportFile{L"Impossible d'ouvrir le fichier !", L"Unable to open file!"};

// Writes FF FE, the text as UTF-16 little-endian and the checksum trailer to
// `path`, creating or truncating it. False when the file cannot be opened;
// write errors after that are not detected.
bool WriteReportFile(const std::wstring& path, std::wstring_view text);

