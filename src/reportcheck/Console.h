// What reportcheck needs of the system: file names as the platform gives
// them, reading a report file with bounds, and printing UTF-8 so that any
// name shows, every write checked.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
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

#if defined(_WIN32)
// Why a Windows call failed: a missing, denied or misnamed path in the words
// the Linux build uses for the same trouble ("No such file or directory"),
// any other error in the system's own text, in English where Windows has
// it, with its number: "error 123: The filename, directory name, or volume
// label syntax is incorrect."
std::string ReasonOfWindowsError(unsigned long error);
#endif

// A name that is not valid text (bytes that are not UTF-8 on Linux, a lone
// surrogate on Windows) shows in PathText with U+FFFD in their place, which
// names no file: then its exact bytes as the system gives them, in hex
// (UTF-8 on Linux, UTF-16LE on Windows), so that the file can be found
// again; nothing when the name is text.
std::optional<std::string> PathBytesUnlessText(const std::filesystem::path& path);

// Standard output could not be written (a full disk, /dev/full, a closed
// console): thrown by Print and FlushOutput, caught in main, which says so
// on standard error and exits with the trouble status. Nothing is claimed
// once output is lost.
class OutputFailure : public std::runtime_error {
public:
    explicit OutputFailure(int error);
};

// On a Windows console through the wide API, whatever its code page; to a
// pipe or a file as UTF-8 bytes, every byte (a NUL too). A failed write to
// standard output throws OutputFailure; one to standard error has nowhere
// to be told and is let go.
void Print(std::FILE* stream, std::string_view utf8);

// Flushes standard output; throws OutputFailure when the bytes could not be
// written. main calls it after every command; collect after every line.
void FlushOutput();

// The same bytes on every system: no CR LF translation of standard output.
void BinaryOutput();

// The largest file check, show, diff and collect read: a report of a
// million directory entries is some 150 MB; a larger file is not a report
// and is refused before it is read.
inline constexpr std::uint64_t kMaxReportFileBytes = 512ull * 1024 * 1024;

// The whole of a regular file of at most kMaxReportFileBytes, or false and
// why not, as "cannot be read (REASON)". A pipe, a device or a folder is
// refused at once, before any read that could wait or never end. With
// `modified`, also the file's last write in seconds since 1970 UTC, from the
// same look at the open file (nothing where the system gives none).
bool ReadReportFile(const NativeChar* path, std::string& bytes, std::string& problem,
                    std::optional<std::int64_t>* modified = nullptr);

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

// A temporary file for bytes on their way out, in the system's temporary
// folder, opened for writing and reading back and removed when closed.
// Null, with errno set, when it cannot be made.
OwnedFile OpenScratchFile();

// Writes `bytes` to a temporary file beside `path` and renames it to `path`
// once every byte is written: `path` holds the whole or is left as it was.
// False with "cannot be written (REASON)" in `problem`.
bool WriteFileWhole(const std::filesystem::path& target, std::string_view bytes, std::string& problem);
