// Writing the report file: whole or not at all.
#pragma once

#include <string>
#include <string_view>

#include "lang/Language.h"
#include "format/ReportChecksum.h"
#include "format/ReportSink.h"
#include "w32/Scoped.h"

// What the user is told, by Save or by the headless report, when the file
// cannot be opened or replaced (a missing folder, no rights, a read-only or
// locked file)...
inline constexpr Bilingual kCannotOpenReportFile{L"Impossible d'ouvrir le fichier !", L"Unable to open file!"};
// ...and when its bytes cannot all be written (a full disk, a lost share).
inline constexpr Bilingual kCannotWriteReportFile{L"Impossible d'écrire le fichier !", L"Unable to write the file!"};

enum class ReportFileOutcome { kWritten, kCannotOpen, kCannotWrite };

// The message for an outcome other than kWritten.
const Bilingual& ReportFileFailureMessage(ReportFileOutcome outcome);

// A report file made as its body arrives. The bytes go to a temporary file
// beside the target, which takes the target's place only when every byte is
// written and flushed: a failure at any point leaves an earlier file at the
// target as it was and removes the temporary file. Appended text is the body
// as the file holds it (the view's text); the checksum is made as it passes.
class ReportFileWriter final : public ReportSink {
public:
    // Refuses at once a target that could not be replaced (read-only, held
    // by another program, a folder) and a folder where nothing can be made.
    explicit ReportFileWriter(const std::wstring& path);
    // Without Commit, the temporary file is removed: nothing was written.
    ~ReportFileWriter() override;
    ReportFileWriter(const ReportFileWriter&) = delete;
    ReportFileWriter& operator=(const ReportFileWriter&) = delete;

    // False when the temporary file could not be made (Commit then says
    // kCannotOpen).
    bool Opened() const { return temporary_.IsValid(); }
    void Append(std::wstring_view text) override;
    // Writes the trailer, flushes and puts the file in the target's place.
    ReportFileOutcome Commit();

private:
    void WriteOut();
    void Discard();

    std::wstring target_;
    std::wstring temporaryPath_;
    w32::ScopedHandle temporary_;
    ReportFileEncoder encoder_;
    std::string pending_;  // bytes not yet handed to the system
    bool writeFailed_ = false;
};

// Writes FF FE, the text as UTF-16 little-endian and the checksum trailer to
// `path`, whole or not at all (ReportFileWriter).
ReportFileOutcome WriteReportFile(const std::wstring& path, std::wstring_view text);
