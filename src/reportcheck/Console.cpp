#include "reportcheck/Console.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>
#include <system_error>

#include "format/NumberText.h"
#include "reader/TerminalText.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

OutputFailure::OutputFailure(int error)
    : std::runtime_error(std::string("standard output: cannot be written (") + std::strerror(error) +
                         "); the output is incomplete") {}

namespace {

std::string CannotBeReadBecause(const std::string& reason) {
    return "cannot be read (" + reason + ")";
}

std::string TooLarge() {
    return CannotBeReadBecause("larger than " + std::to_string(kMaxReportFileBytes / (1024 * 1024)) +
                               " MB, which no report is");
}

void WriteBytes(std::FILE* stream, std::string_view bytes) {
    if (bytes.empty()) return;
    errno = 0;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
    if (!written && stream == stdout) throw OutputFailure(errno ? errno : EIO);
}

// Reads up to `size` bytes (what the file's size said) and one more, to
// notice a file that grows while it is read; `readSome` gives what one read
// call gave, 0 at the end, or -1.
template <class ReadSome>
bool ReadKnownSize(std::uint64_t size, std::string& bytes, std::string& problem, ReadSome readSome) {
    try {
        bytes.resize(static_cast<std::size_t>(size) + 1);
    } catch (const std::bad_alloc&) {
        problem = CannotBeReadBecause(std::strerror(ENOMEM));
        return false;
    }
    std::size_t filled = 0;
    for (;;) {
        const std::size_t room = bytes.size() - filled;
        if (room == 0) break;
        const long long got = readSome(bytes.data() + filled, room);
        if (got < 0) {
            problem = CannotBeReadBecause(std::strerror(errno));
            return false;
        }
        if (got == 0) break;
        filled += static_cast<std::size_t>(got);
    }
    if (filled > kMaxReportFileBytes) {
        problem = TooLarge();
        return false;
    }
    bytes.resize(filled);  // a file that grew is read as far as its size said and one byte: checked as such
    return true;
}

}  // namespace

#if defined(_WIN32)
namespace {
// A FILETIME (100 ns since 1601) in whole seconds since 1970, rounded down.
std::int64_t SecondsSince1970(const FILETIME& time) {
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kSeconds1601To1970 = 11'644'473'600;
    const std::uint64_t ticks = (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
    return static_cast<std::int64_t>(ticks / kTicksPerSecond) - kSeconds1601To1970;
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

namespace {

// The system's text for `error`, its line break left out, or "" when it has none.
std::string SystemMessage(DWORD error) {
    wchar_t text[512];
    DWORD length = 0;
    // reportcheck speaks English; a Windows without English texts has its own.
    for (const LANGID language : {MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT)}) {
        length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, language,
                                  text, static_cast<DWORD>(std::size(text)), nullptr);
        if (length > 0) break;
    }
    while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r' || text[length - 1] == L' ')) --length;
    return ToUtf8(std::wstring_view(text, length));
}

}  // namespace

std::string ReasonOfWindowsError(unsigned long error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND: return std::strerror(ENOENT);
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION: return std::strerror(EACCES);
        case ERROR_DIRECTORY: return std::strerror(ENOTDIR);
        default: break;
    }
    const std::string number = "error " + std::to_string(error);
    const std::string text = SystemMessage(error);
    return text.empty() ? number : number + ": " + text;
}

void Print(std::FILE* stream, std::string_view utf8) {
    const HANDLE handle = ::GetStdHandle(stream == stderr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (handle != INVALID_HANDLE_VALUE && ::GetConsoleMode(handle, &mode)) {
        if (utf8.empty()) return;
        std::wstring wide(utf8.size(), L'\0');
        wide.resize(static_cast<std::size_t>(::MultiByteToWideChar(
            CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), static_cast<int>(wide.size()))));
        std::fflush(stream);
        DWORD written = 0;
        const bool ok = ::WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr) &&
                        written == wide.size();
        if (!ok && stream == stdout) throw OutputFailure(EIO);
        return;
    }
    WriteBytes(stream, utf8);
}

void BinaryOutput() {
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
}

bool ReadReportFile(const wchar_t* path, std::string& bytes, std::string& problem,
                    std::optional<std::int64_t>* modified) {
    // A folder would fail to open as "access denied": named as on Linux instead.
    const DWORD attributes = ::GetFileAttributesW(path);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        problem = CannotBeReadBecause(std::strerror(EISDIR));
        return false;
    }
    // FILE_SHARE_DELETE: a report being moved away while read is still read whole.
    const HANDLE file = ::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        problem = CannotBeReadBecause(ReasonOfWindowsError(::GetLastError()));
        return false;
    }
    struct Closer {
        HANDLE handle;
        ~Closer() { ::CloseHandle(handle); }
    } closer{file};
    BY_HANDLE_FILE_INFORMATION information{};
    if (::GetFileType(file) != FILE_TYPE_DISK || !::GetFileInformationByHandle(file, &information) ||
        (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
        problem = CannotBeReadBecause("not a regular file");
        return false;
    }
    const std::uint64_t size = (std::uint64_t{information.nFileSizeHigh} << 32) | information.nFileSizeLow;
    if (size > kMaxReportFileBytes) {
        problem = TooLarge();
        return false;
    }
    if (modified) *modified = SecondsSince1970(information.ftLastWriteTime);
    return ReadKnownSize(size, bytes, problem, [&](char* into, std::size_t room) -> long long {
        DWORD got = 0;
        const DWORD ask = static_cast<DWORD>(room < (1u << 30) ? room : (1u << 30));
        if (!::ReadFile(file, into, ask, &got, nullptr)) {
            errno = EIO;
            return -1;
        }
        return got;
    });
}
#else
std::string ToUtf8(std::string_view text) {
    return std::string(text);
}

void Print(std::FILE* stream, std::string_view text) {
    WriteBytes(stream, text);
}

void BinaryOutput() {}

bool ReadReportFile(const char* path, std::string& bytes, std::string& problem, std::optional<std::int64_t>* modified) {
    // O_NONBLOCK: opening a pipe with no writer would wait for one. It does
    // nothing to a regular file, the only kind read.
    const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        problem = CannotBeReadBecause(std::strerror(errno));
        return false;
    }
    struct Closer {
        int fd;
        ~Closer() { ::close(fd); }
    } closer{fd};
    struct stat information{};
    if (::fstat(fd, &information) != 0) {
        problem = CannotBeReadBecause(std::strerror(errno));
        return false;
    }
    if (!S_ISREG(information.st_mode)) {
        problem = CannotBeReadBecause(S_ISDIR(information.st_mode) ? std::strerror(EISDIR) : "not a regular file");
        return false;
    }
    if (static_cast<std::uint64_t>(information.st_size) > kMaxReportFileBytes) {
        problem = TooLarge();
        return false;
    }
    if (modified) *modified = static_cast<std::int64_t>(information.st_mtime);
    return ReadKnownSize(static_cast<std::uint64_t>(information.st_size), bytes, problem,
                         [&](char* into, std::size_t room) -> long long {
                             ssize_t got;
                             do got = ::read(fd, into, room);
                             while (got < 0 && errno == EINTR);
                             return got;
                         });
}
#endif

void FlushOutput() {
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) throw OutputFailure(errno ? errno : EIO);
}

std::string PathText(const std::filesystem::path& path) {
    return ToUtf8(path.native());
}

std::optional<std::string> PathBytesUnlessText(const std::filesystem::path& path) {
    const auto& name = path.native();
#if defined(_WIN32)
    bool text = true;
    for (std::size_t i = 0; i < name.size() && text; ++i) {
        const bool high = name[i] >= 0xD800 && name[i] <= 0xDBFF, low = name[i] >= 0xDC00 && name[i] <= 0xDFFF;
        if (high && i + 1 < name.size() && name[i + 1] >= 0xDC00 && name[i + 1] <= 0xDFFF) ++i;
        else if (high || low) text = false;
    }
    if (text) return std::nullopt;
    std::string bytes;
    for (const wchar_t unit : name) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
#else
    if (report_model::IsWellFormedUtf8(name)) return std::nullopt;
    const std::string& bytes = name;
#endif
    std::string hex;
    for (const char byte : bytes) hex += numtext::Hex<char>(static_cast<unsigned char>(byte), 2, false);
    return hex;
}

OwnedFile OpenScratchFile() {
#if defined(_WIN32)
    // tmpfile() would make it in the drive's root folder, which a user may
    // not write; "D" deletes it on closing, "T" keeps it in memory if it can.
    static unsigned made = 0;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) {
        errno = error.value();
        return nullptr;
    }
    const std::wstring name = L"reportcheck-" + std::to_wstring(_getpid()) + L"-" + std::to_wstring(++made) + L".tmp";
    return OwnedFile(_wfopen((folder / name).c_str(), L"w+bTD"));
#else
    return OwnedFile(std::tmpfile());
#endif
}

bool WriteFileWhole(const std::filesystem::path& target, std::string_view bytes, std::string& problem) {
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
