#include "w32/ExceptionBarrier.h"

#include <utility>

#include "lang/Language.h"
#include "w32/ComError.h"
#include "w32/Log.h"
#include "w32/MessageBox.h"

namespace w32 {
namespace {
constexpr Bilingual kUnexpectedFailure{L"Une erreur inattendue a interrompu l'opération.",
                                       L"An unexpected error stopped the operation."};

FailureNotice& CurrentNotice() {
    static FailureNotice notice;
    return notice;
}
}  // namespace

void LogCurrentException(const char* where) noexcept {
    try {
        try {
            throw;
        } catch (const ComError& error) {
            WriteLog("Unexpected exception in %s: %s (0x%x)", where, error.what(),
                     static_cast<unsigned>(error.Code()));
        } catch (const std::exception& error) {
            WriteLog("Unexpected exception in %s: %s", where, error.what());
        } catch (...) {
            WriteLog("Unexpected exception in %s: unknown exception", where);
        }
    } catch (...) {
        // A log that cannot be written leaves the failure untold, not the process ended.
    }
}

void SetFailureNotice(FailureNotice notice) { CurrentNotice() = std::move(notice); }

void ShowFailureNotice(const char* where) noexcept {
    // A handler that throws again while the box is up (a paint under it)
    // is logged, not told a second time.
    static bool showing = false;
    if (showing) return;
    showing = true;
    RunWithBarrier("ShowFailureNotice", [where] {
        if (const FailureNotice& notice = CurrentNotice()) {
            notice(where);
            return;
        }
        ShowMessageBox(Tr(kUnexpectedFailure), MB_ICONSTOP | MB_OK);
    });
    showing = false;
}

}  // namespace w32
