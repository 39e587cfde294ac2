// What reportcheck needs of the system: file names as the platform gives
// them, reading a whole file, and printing UTF-8 so that any name shows.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#if defined(_WIN32)
using NativeChar = wchar_t;  // wmain: names arrive as UTF-16 whatever the code page
#else
using NativeChar = char;     // names are bytes, printed as they were given
#endif
using NativeString = std::basic_string<NativeChar>;

std::string ToUtf8(std::basic_string_view<NativeChar> text);
std::string PathText(const std::filesystem::path& path);

// On a Windows console through the wide API, whatever its code page; to a
// pipe or a file as UTF-8 bytes.
void Print(std::FILE* stream, const std::string& utf8);

// The same bytes on every system: no CR LF translation of standard output.
void BinaryOutput();

// The whole file, or false and the errno value that stopped the reading.
// Reports are small; a file too large for memory is simply one that cannot
// be read.
bool ReadWholeFile(const NativeChar* path, std::string& bytes, int& error);

// Writes the file whole: the bytes go to a file beside it that takes its
// name only once it holds every one. On failure nothing is left behind and
// `problem` says why ("cannot be written (...)").
bool WriteWholeFile(const std::filesystem::path& target, std::string_view bytes, std::string& problem);
