#include "collect/ReportFile.h"

#include <windows.h>

#include <atomic>

namespace {
// Written to the system in pieces of this size: a large report is never
// held whole, and a small one is written at once.
constexpr std::size_t kWriteChunkBytes = 64 * 1024;
// A name already taken by a file of somebody else's is passed over.
constexpr int kTemporaryNameAttempts = 16;

// The full path, in the extended form "\\?\" when it is MAX_PATH characters
// or more (that form takes only full paths); the path as given when the
// system cannot make it full.
std::wstring FullPath(const std::wstring& path) {
    if (path.rfind(L"\\\\?\\", 0) == 0) return path;
    const DWORD needed = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (needed == 0) return path;
    std::wstring full(needed, L'\0');
    full.resize(::GetFullPathNameW(path.c_str(), needed, full.data(), nullptr));
    if (full.size() < MAX_PATH) return full;
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

// A target that does not exist yet can always take the new file; one that
// exists must open for writing as today's "wb" opened it, so that a file
// another program holds, or a folder, is refused before anything is made.
bool CanBeReplaced(const std::wstring& target) {
    if (IsReadOnlyFile(target)) return false;
    const w32::ScopedHandle existing(::CreateFileW(target.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return existing.IsValid() || ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

// "~report-<process>-<n>.tmp" in the target's folder: the same volume, so
// that putting it in place is a rename.
std::wstring TemporaryPathBeside(const std::wstring& target, unsigned number) {
    const std::size_t slash = target.find_last_of(L'\\');
    const std::wstring folder = slash == std::wstring::npos ? std::wstring() : target.substr(0, slash + 1);
    return folder + L"~report-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(number) +
           L".tmp";
}

unsigned NextTemporaryNumber() {
    static std::atomic<unsigned> next{0};
    return next++;
}

// True when every byte was handed to the system.
bool WriteAll(HANDLE file, const std::string& bytes) {
    DWORD written = 0;
    return ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}
}  // namespace

const Bilingual& ReportFileFailureMessage(ReportFileOutcome outcome) {
    return outcome == ReportFileOutcome::kCannotWrite ? kCannotWriteReportFile : kCannotOpenReportFile;
}

ReportFileWriter::ReportFileWriter(const std::wstring& path) : target_(FullPath(path)) {
    if (!CanBeReplaced(target_)) return;
    for (int attempt = 0; attempt < kTemporaryNameAttempts; ++attempt) {
        const std::wstring candidate = TemporaryPathBeside(target_, NextTemporaryNumber());
        temporary_.Reset(::CreateFileW(candidate.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
        if (temporary_) {
            temporaryPath_ = candidate;
            encoder_.Begin(pending_);
            return;
        }
        if (::GetLastError() != ERROR_FILE_EXISTS) return;
    }
}

ReportFileWriter::~ReportFileWriter() { Discard(); }

void ReportFileWriter::Append(std::wstring_view text) {
    if (!temporary_ || writeFailed_) return;
    // A whole view's text comes as one piece: it still goes out in chunks.
    const std::u16string_view units = AsUtf16(text);
    for (std::size_t done = 0; done < units.size(); done += kWriteChunkBytes / 2) {
        encoder_.AddBody(units.substr(done, kWriteChunkBytes / 2), pending_);
        if (pending_.size() >= kWriteChunkBytes) WriteOut();
    }
}

void ReportFileWriter::WriteOut() {
    if (!writeFailed_ && !WriteAll(temporary_.Get(), pending_)) writeFailed_ = true;
    pending_.clear();
}

ReportFileOutcome ReportFileWriter::Commit() {
    if (!temporary_) return ReportFileOutcome::kCannotOpen;
    encoder_.End(pending_);
    WriteOut();
    // A full disk may show only when the system writes its cache out, or
    // when the file is closed.
    if (writeFailed_ || !::FlushFileBuffers(temporary_.Get()) || !::CloseHandle(temporary_.Release())) {
        Discard();
        return ReportFileOutcome::kCannotWrite;
    }
    if (!::MoveFileExW(temporaryPath_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        Discard();
        return ReportFileOutcome::kCannotOpen;
    }
    temporaryPath_.clear();
    return ReportFileOutcome::kWritten;
}

void ReportFileWriter::Discard() {
    temporary_.Reset();
    if (!temporaryPath_.empty()) ::DeleteFileW(temporaryPath_.c_str());
    temporaryPath_.clear();
}

ReportFileOutcome WriteReportFile(const std::wstring& path, std::wstring_view text) {
    ReportFileWriter file(path);
    file.Append(text);
    return file.Commit();
}
