#include "reportcheck/FileWalk.h"

#include <algorithm>
#include <cerrno>
#include <compare>
#include <cstdint>
#include <cstring>
#include <set>
#include <utility>

#include "reportcheck/Console.h"
#include "reportcheck/LoadedReport.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dirent.h>
#include <sys/stat.h>
#endif

namespace {

namespace fs = std::filesystem;

enum class Kind { File, Folder, LinkToFolder, Other };

// What a folder holds is known from its listing (the type in the entry,
// Windows' attributes) without a call per file.
struct Entry {
    fs::path path;
    Kind kind;
};

// A folder or file as the system knows it, whatever path reached it.
struct Identity {
    std::uint64_t volume = 0, index = 0;
    auto operator<=>(const Identity&) const = default;
};

#if defined(_WIN32)
// A junction or a symbolic link is a reparse point; FindFirstFile and
// GetFileAttributes tell it without following it.
Kind KindOf(DWORD attributes) {
    const bool folder = attributes & FILE_ATTRIBUTE_DIRECTORY;
    if (folder && (attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return Kind::LinkToFolder;
    if (folder) return Kind::Folder;
    if (attributes & FILE_ATTRIBUTE_DEVICE) return Kind::Other;
    return Kind::File;
}

bool IdentityOf(const fs::path& path, Identity& identity) {
    const HANDLE handle = ::CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return false;
    BY_HANDLE_FILE_INFORMATION information{};
    const bool ok = ::GetFileInformationByHandle(handle, &information);
    ::CloseHandle(handle);
    identity = {information.dwVolumeSerialNumber,
                (std::uint64_t{information.nFileIndexHigh} << 32) | information.nFileIndexLow};
    return ok;
}

bool KindOfRoot(const fs::path& path, Kind& kind, std::string& reason) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        reason = ReasonOfWindowsError(::GetLastError());
        return false;
    }
    kind = KindOf(attributes);
    if (kind == Kind::LinkToFolder) kind = Kind::Folder;  // named on the command line: the user chose it
    return true;
}

bool ListFolder(const fs::path& folder, std::vector<Entry>& entries, std::string& reason) {
    WIN32_FIND_DATAW found;
    const HANDLE find = ::FindFirstFileExW((folder / L"*").c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                           nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (find == INVALID_HANDLE_VALUE) {
        reason = ReasonOfWindowsError(::GetLastError());
        return false;
    }
    do {
        const std::wstring_view name = found.cFileName;
        if (name == L"." || name == L"..") continue;
        entries.push_back({folder / name, KindOf(found.dwFileAttributes)});
    } while (::FindNextFileW(find, &found));
    const DWORD error = ::GetLastError();
    ::FindClose(find);
    if (error != ERROR_NO_MORE_FILES) {
        reason = ReasonOfWindowsError(error);
        return false;
    }
    return true;
}
#else
Kind KindOf(const fs::path& path, mode_t mode) {
    if (S_ISDIR(mode)) return Kind::Folder;
    if (S_ISREG(mode)) return Kind::File;
    if (!S_ISLNK(mode)) return Kind::Other;
    // A link: to a folder it is not followed; to a file, or broken, or a
    // loop, it is read as a file, and the reading says what is wrong.
    struct stat target{};
    if (::stat(path.c_str(), &target) == 0 && S_ISDIR(target.st_mode)) return Kind::LinkToFolder;
    return Kind::File;
}

bool IdentityOf(const fs::path& path, Identity& identity) {
    struct stat information{};
    if (::stat(path.c_str(), &information) != 0) return false;
    identity = {static_cast<std::uint64_t>(information.st_dev), static_cast<std::uint64_t>(information.st_ino)};
    return true;
}

// A PATH named on the command line is followed when it is a link: the user chose it.
bool KindOfRoot(const fs::path& path, Kind& kind, std::string& reason) {
    struct stat information{};
    if (::stat(path.c_str(), &information) != 0) {
        reason = std::strerror(errno);
        return false;
    }
    kind = KindOf(path, information.st_mode);
    return true;
}

Kind KindOfEntry(const fs::path& path, unsigned char type) {
    switch (type) {
        case DT_REG: return Kind::File;
        case DT_DIR: return Kind::Folder;
        case DT_UNKNOWN: break;  // some file systems do not say: asked
        case DT_LNK: break;
        default: return Kind::Other;
    }
    struct stat information{};
    if (::lstat(path.c_str(), &information) != 0) return Kind::File;  // gone: the reading says so
    return KindOf(path, information.st_mode);
}

bool ListFolder(const fs::path& folder, std::vector<Entry>& entries, std::string& reason) {
    DIR* listing = ::opendir(folder.c_str());
    if (!listing) {
        reason = std::strerror(errno);
        return false;
    }
    // readdir tells its error through errno only; KindOfEntry's calls set it too.
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(listing);
        if (!entry) break;
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        fs::path path = folder / name;
        const Kind kind = KindOfEntry(path, entry->d_type);
        entries.push_back({std::move(path), kind});
    }
    const int error = errno;
    ::closedir(listing);
    if (error != 0) {
        reason = std::strerror(error);
        return false;
    }
    return true;
}
#endif

class Walk {
public:
    explicit Walk(const FileWalkCalls& calls) : calls_(calls) {}

    int Root(const fs::path& path) {
        Kind kind;
        std::string reason;
        // Not there, or a loop of links: read as a file, and the reading
        // says why in the words check uses.
        if (!KindOfRoot(path, kind, reason)) kind = Kind::File;
        const fs::path parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
        Identity folder;
        const bool known = IdentityOf(parent, folder);
        filesRead_ = 0;
        const std::size_t foldersBefore = seenFolders_.size();
        const int status = Visit({path, kind}, known ? &folder : nullptr);
        const bool readNow = seenFolders_.size() > foldersBefore;  // not one already read
        if (kind == Kind::Folder && readNow && filesRead_ == 0) Complain(PathText(path), "no file in this folder");
        return status;
    }

private:
    int Visit(const Entry& entry, const Identity* folder) {
        switch (entry.kind) {
            case Kind::File: return File(entry.path, folder);
            case Kind::Folder: return Folder(entry.path);
            case Kind::LinkToFolder: Skip(entry.path, "a link to a folder, not followed"); return kAllIntact;
            case Kind::Other: ++filesRead_; return calls_.onProblem(entry.path, "cannot be read (not a regular file)");
        }
        return kAllIntact;
    }

    // Files are known by their folder and name: a folder is walked once, so
    // only a file named itself, in a folder also named, comes twice.
    int File(const fs::path& path, const Identity* folder) {
        if (folder && !seenFiles_.emplace(*folder, NameKey(path)).second) {
            Skip(path, "already read");
            return kAllIntact;
        }
        ++filesRead_;
        return calls_.onFile(path);
    }

    int Folder(const fs::path& path) {
        Identity identity;
        const bool known = IdentityOf(path, identity);
        if (known && !seenFolders_.insert(identity).second) {
            Skip(path, "already read");
            return kAllIntact;
        }
        std::vector<Entry> entries;
        std::string reason;
        if (!ListFolder(path, entries, reason)) return calls_.onProblem(path, "cannot be read (" + reason + ")");
        std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.path < b.path; });
        int worst = kAllIntact;
        for (const Entry& entry : entries) worst = std::max(worst, Visit(entry, known ? &identity : nullptr));
        return worst;
    }

    static fs::path::string_type NameKey(const fs::path& path) {
        const fs::path::string_type name = path.filename().native();
#if defined(_WIN32)
        // Names that Windows takes as one (kernel32's mapping: no user32 import).
        std::wstring upper(name.size(), L'\0');
        const int length = ::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, name.data(),
                                           static_cast<int>(name.size()), upper.data(),
                                           static_cast<int>(upper.size()), nullptr, nullptr, 0);
        if (length > 0) return upper;
#endif
        return name;
    }

    void Skip(const fs::path& path, const std::string& reason) {
        if (calls_.onSkip)
            calls_.onSkip(path, reason);
        else
            Complain(PathText(path), "skipped (" + reason + ")");
    }

    const FileWalkCalls& calls_;
    std::set<Identity> seenFolders_;
    std::set<std::pair<Identity, fs::path::string_type>> seenFiles_;
    int filesRead_ = 0;  // under the root being walked
};

}  // namespace

int ForEachFile(const std::vector<fs::path>& roots, const FileWalkCalls& calls) {
    Walk walk(calls);
    int worst = kAllIntact;
    for (const fs::path& root : roots) worst = std::max(worst, walk.Root(root));
    return worst;
}
