// What reportcheck's commands share: names as the system gives them,
// printing, reading a report file whole, and the exit statuses.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "reader/ReportModel.h"
#include "format/ReportVerdict.h"

namespace reportcheck {

enum ExitStatus { kAllIntact = 0, kSomeAltered = 1, kSomeNotAReport = 2 };

#if defined(_WIN32)
using NativeChar = wchar_t;  // wmain: names arrive as UTF-16
std::string ToUtf8(std::wstring_view text);
#else
using NativeChar = char;
std::string ToUtf8(std::string_view text);
#endif

// UTF-8 to a console through the wide API on Windows; bytes elsewhere.
void Print(std::FILE* stream, const std::string& utf8);
bool IsHelpOption(std::string_view argument);
// "reportcheck: NAME: PROBLEM" on standard error.
void Complain(const std::string& name, const std::string& problem);
// No CR LF translation of standard output.
void BinaryOutput();
std::string PathText(const std::filesystem::path& path);

enum class LoadState { Report, NotAReport, Unreadable };

struct Loaded {
    LoadState state = LoadState::Unreadable;
    ReportVerdict verdict;
    std::string problem;  // why it is not a report, or cannot be read
    std::u16string body;  // between the byte-order mark and the trailer
    report_model::Report report;
};

Loaded Load(const NativeChar* path);
int StatusOf(const Loaded& loaded);

// reportcheck page (PageCommand.cpp)
int Page(int argc, NativeChar* argv[]);

}  // namespace reportcheck
