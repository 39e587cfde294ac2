#include "reportcheck/Console.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <new>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace {
#if defined(_WIN32)
std::FILE* OpenForReading(const wchar_t* path) {
    return _wfopen(path, L"rb");
}
#else
std::FILE* OpenForReading(const char* path) {
    return std::fopen(path, "rb");
}
#endif
}  // namespace

#if defined(_WIN32)
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

void BinaryOutput() {
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
}
#else
std::string ToUtf8(std::string_view text) {
    return std::string(text);
}

void Print(std::FILE* stream, const std::string& text) {
    std::fputs(text.c_str(), stream);
}

void BinaryOutput() {}
#endif

std::string PathText(const std::filesystem::path& path) {
    return ToUtf8(path.native());
}

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

bool WriteWholeFile(const std::filesystem::path& target, std::string_view bytes, std::string& problem) {
    namespace fs = std::filesystem;
#if defined(_WIN32)
    const int pid = _getpid();
#else
    const int pid = static_cast<int>(::getpid());
#endif
    fs::path partial = target;
    partial += ".part" + std::to_string(pid);
    bool ok;
    {
        std::ofstream file(partial, std::ios::binary | std::ios::trunc);
        ok = file.is_open() && file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) && file.flush();
    }
    std::error_code error;
    if (ok) fs::rename(partial, target, error);
    if (!ok || error) {
        const std::string reason = ok ? error.message() : std::string(std::strerror(errno));
        fs::remove(partial, error);
        problem = "cannot be written (" + reason + ")";
        return false;
    }
    return true;
}
