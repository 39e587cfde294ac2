// What every reportcheck command shares: names and output on each system,
// reading a file whole, loading a report, walking folders.
#pragma once

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "reader/ReportModel.h"
#include "format/ReportVerdict.h"

namespace reportcheck {

enum ExitStatus { kAllIntact = 0, kSomeAltered = 1, kSomeNotAReport = 2 };

#if defined(_WIN32)
using NativeChar = wchar_t;
std::string ToUtf8(std::wstring_view text);
#else
using NativeChar = char;
// File names are bytes here; they are printed as they were given.
std::string ToUtf8(std::string_view text);
#endif

std::string PathText(const std::filesystem::path& path);
// A path from UTF-8 text (a name read from a database).
std::filesystem::path PathFromUtf8(const std::string& text);

// A console shows any name through the wide API, whatever its code page;
// a pipe or a file gets UTF-8.
void Print(std::FILE* stream, const std::string& utf8);
// The same bytes on every system: no CR LF translation of standard output.
void BinaryOutput();
void Complain(const std::string& name, const std::string& problem);
bool IsHelpOption(std::string_view argument);

// The whole file, or the errno value that stopped the reading.
bool ReadWholeFile(const NativeChar* path, std::string& bytes, int& error);

enum class LoadState { Report, NotAReport, Unreadable };

struct Loaded {
    LoadState state = LoadState::Unreadable;
    ReportVerdict verdict;
    std::string problem;  // why it is not a report, or cannot be read
    report_model::Report report;
    std::u16string body;  // kept for whoever needs the lines as they are
};

Loaded Load(const NativeChar* path);
int StatusOf(const Loaded& loaded);

// Calls `onFile` for every file at `path`: the file itself, or a folder's
// files in name order, then its folders', one level at a time (only one
// folder's names are held at once). A path that cannot be read, a pipe, a
// device or a broken link goes to `onProblem` with the reason. Gives the
// worst status the calls gave.
int ForEachFile(const std::filesystem::path& path, const std::function<int(const std::filesystem::path&)>& onFile,
                const std::function<int(const std::filesystem::path&, const std::string&)>& onProblem);

}  // namespace reportcheck
