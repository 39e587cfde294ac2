#include "reportcheck/ReportFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <vector>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#endif

namespace reportcheck {

#if defined(_WIN32)
namespace {
std::FILE* OpenForReading(const wchar_t* path) {
    return _wfopen(path, L"rb");
}
}  // namespace

std::string ToUtf8(std::wstring_view text) {
    if (text.empty()) return {};
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                           nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(), size, nullptr,
                          nullptr);
    return utf8;
}

void Print(std::FILE* stream, const std::string& utf8) {
    const HANDLE handle = ::GetStdHandle(stream == stderr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (handle != INVALID_HANDLE_VALUE && ::GetConsoleMode(handle, &mode)) {
        std::wstring wide(utf8.size(), L'\0');
        wide.resize(static_cast<std::size_t>(::MultiByteToWideChar(
            CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), static_cast<int>(wide.size()))));
        std::fflush(stream);
        DWORD written = 0;
        ::WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
        return;
    }
    std::fputs(utf8.c_str(), stream);
}

std::string PathText(const std::filesystem::path& path) {
    return ToUtf8(path.native());
}
#else
namespace {
std::FILE* OpenForReading(const char* path) {
    return std::fopen(path, "rb");
}
}  // namespace

std::string ToUtf8(std::string_view text) {
    return std::string(text);
}

void Print(std::FILE* stream, const std::string& text) {
    std::fputs(text.c_str(), stream);
}

std::string PathText(const std::filesystem::path& path) {
    return path.native();
}
#endif

std::filesystem::path PathFromUtf8(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

void BinaryOutput() {
#if defined(_WIN32)
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
#endif
}

void Complain(const std::string& name, const std::string& problem) {
    Print(stderr, "reportcheck: " + name + ": " + problem + "\n");
}

bool IsHelpOption(std::string_view argument) {
    return argument == "-h" || argument == "--help" || argument == "/?";
}

// Reports are small; a file too large for memory is simply one that cannot
// be read.
bool ReadWholeFile(const NativeChar* path, std::string& bytes, int& error) {
    std::FILE* file = OpenForReading(path);
    if (!file) {
        error = errno;
        return false;
    }
    std::setvbuf(file, nullptr, _IONBF, 0);  // straight into the buffer below, no stdio one between
    bool ok = true;
    try {
        char buffer[64 * 1024];
        std::size_t count;
        while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
            bytes.append(buffer, count);
            if (count < sizeof buffer) break;  // the end, or an error: no need to ask again
        }
        if (std::ferror(file)) {
            ok = false;
            error = errno;
        }
    } catch (const std::bad_alloc&) {
        ok = false;
        error = ENOMEM;
    }
    std::fclose(file);
    return ok;
}

namespace {
std::u16string BodyOf(std::string_view bytes) {
    constexpr std::size_t kBom = 2, kTrailer = 30;
    const std::string_view raw = bytes.substr(kBom, bytes.size() - kBom - kTrailer);
    std::u16string body(raw.size() / 2, u'\0');
    char16_t* units = body.data();
    for (std::size_t i = 0; i < body.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(raw[2 * i]) |
                                         static_cast<unsigned char>(raw[2 * i + 1]) << 8);
    return body;
}
}  // namespace

Loaded Load(const NativeChar* path) {
    Loaded loaded;
    std::string bytes;
    int error = 0;
    if (!ReadWholeFile(path, bytes, error)) {
        loaded.problem = std::string("cannot be read (") + std::strerror(error) + ")";
        return loaded;
    }
    loaded.verdict = CheckReportBytes(bytes);
    if (loaded.verdict.state == ReportState::NotAReport) {
        loaded.state = LoadState::NotAReport;
        loaded.problem = DescribeReportVerdict(loaded.verdict);
        return loaded;
    }
    loaded.state = LoadState::Report;
    loaded.body = BodyOf(bytes);
    loaded.report = report_model::ParseReportBody(loaded.body);
    return loaded;
}

int StatusOf(const Loaded& loaded) {
    if (loaded.state != LoadState::Report) return kSomeNotAReport;
    return loaded.verdict.state == ReportState::Intact ? kAllIntact : kSomeAltered;
}

int ForEachFile(const std::filesystem::path& path, const std::function<int(const std::filesystem::path&)>& onFile,
                const std::function<int(const std::filesystem::path&, const std::string&)>& onProblem) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_regular_file(status)) return onFile(path);
    if (!fs::is_directory(status)) {
        // A pipe or a device would block the reading; a broken link has nothing to read.
        return onProblem(path, fs::exists(status) ? "cannot be read (not a regular file)"
                                                  : "cannot be read (" + std::string(std::strerror(ENOENT)) + ")");
    }
    std::vector<fs::path> names;
    fs::directory_iterator it(path, error), end;
    if (error) return onProblem(path, "cannot be read (" + error.message() + ")");
    for (; it != end; it.increment(error)) {
        if (error) break;
        names.push_back(it->path());
    }
    if (error) return onProblem(path, "cannot be read (" + error.message() + ")");
    std::sort(names.begin(), names.end());
    int worst = kAllIntact;
    for (const fs::path& name : names) worst = std::max(worst, ForEachFile(name, onFile, onProblem));
    return worst;
}

}  // namespace reportcheck
