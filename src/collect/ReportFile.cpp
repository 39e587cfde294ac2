#include "collect/ReportFile.h"

#include <windows.h>

#include "format/ReportChecksum.h"
#include "w32/Scoped.h"

namespace {
// Paths of MAX_PATH characters and more need the extended form "\\?\",
// which takes only full paths.
std::wstring OpenablePath(const std::wstring& path) {
    if (path.size() < MAX_PATH || path.rfind(L"\\\\?\\", 0) == 0) return path;
    const DWORD needed = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (needed == 0) return path;
    std::wstring full(needed, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), needed, full.data(), nullptr);
    full.resize(length);
    if (full.rfind(L"\\\\", 0) == 0) return L"\\\\?\\UNC\\" + full.substr(2);
    return L"\\\\?\\" + full;
}

// Windows refuses to open a read-only file for writing. Wine run as root
// would let the write through (the Unix mode does not stop root), so the
// attribute is asked first: the file is then refused everywhere alike.
bool IsReadOnlyFile(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) &&
           !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}
}  // namespace

bool WriteReportFile(const std::wstring& path, std::wstring_view text) {
    const std::wstring openable = OpenablePath(path);
    if (IsReadOnlyFile(openable)) return false;
    // Created or truncated, shared for reading and writing as the C runtime's "wb" would be.
    w32::ScopedHandle file(::CreateFileW(openable.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return false;
    const std::string bytes = BuildReportFileBytes(AsUtf16(text));
    DWORD written = 0;
    ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    return true;
}
