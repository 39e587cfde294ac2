// A directory of its own for one test, removed with everything in it.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "w32/Scoped.h"

// Every test process works under a folder of its own in the temporary
// directory, made for it alone and removed when it ends: nothing another test
// does can touch what a test reads, not even the parent of its directories
// (whose times a listing of ".." shows).
class ScratchRoot {
public:
    static const std::wstring& Path() {
        static const ScratchRoot root;
        return root.path_;
    }

private:
    ScratchRoot() {
        wchar_t base[MAX_PATH + 1] = {};
        ::GetTempPathW(MAX_PATH + 1, base);
        // Process ids come back quickly under Wine: a folder that exists
        // already belongs to someone else, so the next name is tried.
        for (ULONGLONG attempt = ::GetTickCount64();; ++attempt) {
            path_ = std::wstring(base) + L"orvane-test-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
                    std::to_wstring(attempt);
            if (::CreateDirectoryW(path_.c_str(), nullptr)) return;
            if (::GetLastError() != ERROR_ALREADY_EXISTS) return;
        }
    }
    ~ScratchRoot();
    ScratchRoot(const ScratchRoot&) = delete;
    ScratchRoot& operator=(const ScratchRoot&) = delete;

    std::wstring path_;
};

// A new folder of the test's own under its scratch root, named after `stem`.
inline std::wstring NewScratchFolder(std::wstring_view stem) {
    static unsigned counter = 0;
    for (;;) {
        const std::wstring path = ScratchRoot::Path() + L"\\" + std::wstring(stem) + L"-" + std::to_wstring(++counter);
        if (::CreateDirectoryW(path.c_str(), nullptr) || ::GetLastError() != ERROR_ALREADY_EXISTS) return path;
    }
}

class TempDirectory {
public:
    TempDirectory() : path_(NewScratchFolder(L"dir")) {}
    ~TempDirectory() { RemoveTree(path_); }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;

    const std::wstring& Path() const { return path_; }
    std::wstring operator/(std::wstring_view name) const { return path_ + L"\\" + std::wstring(name); }

    static bool WriteFile(const std::wstring& path, std::string_view bytes) {
        const w32::ScopedHandle file(
            ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file) return false;
        DWORD written = 0;
        return ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
               written == bytes.size();
    }

    static void RemoveTree(const std::wstring& directory) {
        // An empty name would mean the root of the current drive.
        if (directory.empty()) return;
        WIN32_FIND_DATAW entry{};
        std::vector<std::wstring> subdirectories;
        {
            const w32::ScopedFind search(::FindFirstFileW((directory + L"\\*").c_str(), &entry));
            if (!search) return;
            do {
                const std::wstring name = entry.cFileName;
                if (name == L"." || name == L"..") continue;
                const std::wstring path = directory + L"\\" + name;
                if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                    subdirectories.push_back(path);
                } else {
                    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
                    ::DeleteFileW(path.c_str());
                }
            } while (::FindNextFileW(search.Get(), &entry));
        }
        for (const std::wstring& subdirectory : subdirectories) RemoveTree(subdirectory);
        ::RemoveDirectoryW(directory.c_str());
    }

private:
    std::wstring path_;
};

inline ScratchRoot::~ScratchRoot() { TempDirectory::RemoveTree(path_); }

// The splitting of a listing into its lines, by the entry name (the fifth
// tab-separated field of a line).
inline std::vector<std::wstring> SplitLines(const std::wstring& listing) {
    std::vector<std::wstring> lines;
    std::size_t start = 0;
    // Lines are "\t...\n"; a content part adds "\n\t\t\t\t..." inside a line.
    for (std::size_t i = 0; i < listing.size(); ++i) {
        if (listing[i] != L'\n') continue;
        if (listing.compare(i + 1, 4, L"\t\t\t\t") == 0) continue;
        lines.push_back(listing.substr(start, i + 1 - start));
        start = i + 1;
    }
    return lines;
}

inline std::wstring NameOfLine(const std::wstring& line) {
    std::size_t field = 0;
    std::size_t start = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != L'\t') continue;
        if (field == 4) return line.substr(start, i - start);
        ++field;
        start = i + 1;
    }
    return {};
}

inline std::wstring LineNamed(const std::wstring& listing, std::wstring_view name) {
    for (const std::wstring& line : SplitLines(listing)) {
        if (NameOfLine(line) == name) return line;
    }
    return {};
}
