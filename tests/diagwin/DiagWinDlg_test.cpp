// The Diagnostics window in-process, where a test can choose what the report
// reads: a local time that cannot be had.
#include "diagwin/DiagWinDlg.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "resource.h"
#include "support/TestApp.h"
#include "w32/Text.h"

namespace {

using namespace std::chrono_literals;

// What a message box showed, read while it was on screen.
struct SeenBox {
    bool seen = false;
    std::wstring caption;
    std::wstring text;
    std::vector<int> buttonIds;
    HICON icon = nullptr;
    HWND owner = nullptr;
    bool ownerVisible = false;
};

std::wstring ClassOf(HWND hwnd) {
    wchar_t name[64] = {};
    ::GetClassNameW(hwnd, name, 64);
    return name;
}

HWND FindMessageBox(DWORD thread) {
    HWND found = nullptr;
    ::EnumThreadWindows(
        thread,
        [](HWND hwnd, LPARAM lParam) -> BOOL {
            // The Diagnostics window is a dialog too: the box is the one without a report view.
            if (!::IsWindowVisible(hwnd) || ClassOf(hwnd) != L"#32770" || ::GetDlgItem(hwnd, IDC_REPORT_VIEW))
                return TRUE;
            *reinterpret_cast<HWND*>(lParam) = hwnd;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

SeenBox Read(HWND box) {
    SeenBox seen;
    seen.seen = true;
    seen.caption = w32::GetWindowTextString(box);
    seen.owner = ::GetWindow(box, GW_OWNER);
    seen.ownerVisible = seen.owner && ::IsWindowVisible(seen.owner);
    for (HWND child = ::GetWindow(box, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        const std::wstring cls = ClassOf(child);
        if (cls == L"Button" && ::IsWindowVisible(child)) seen.buttonIds.push_back(::GetDlgCtrlID(child));
        if (cls != L"Static") continue;
        if ((::GetWindowLongW(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON)
            seen.icon = reinterpret_cast<HICON>(::SendMessageW(child, STM_GETICON, 0, 0));
        else if (const std::wstring text = w32::GetWindowTextString(child); !text.empty())
            seen.text = text;
    }
    return seen;
}

// Answers, from a thread of its own, the first message box that `thread`
// shows: reads it, then presses its OK button. Gives up after 30 seconds.
class MessageBoxAnswerer {
public:
    explicit MessageBoxAnswerer(DWORD thread) : worker_([this, thread] { Answer(thread); }) {}
    ~MessageBoxAnswerer() {
        if (worker_.joinable()) worker_.join();
    }
    SeenBox Seen() {
        if (worker_.joinable()) worker_.join();
        return seen_;
    }

private:
    void Answer(DWORD thread) {
        const auto deadline = std::chrono::steady_clock::now() + 30s;
        while (std::chrono::steady_clock::now() < deadline) {
            if (HWND box = FindMessageBox(thread)) {
                seen_ = Read(box);
                ::PostMessageW(box, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
                return;
            }
            std::this_thread::sleep_for(20ms);
        }
    }

    SeenBox seen_;
    std::thread worker_;
};

ReportSources WithoutLocalTime() {
    ReportSources sources;
    sources.localDateAndTime = [] { return std::optional<std::wstring>(); };
    return sources;
}

class ReportWindowWithoutLocalTime : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(window_.Create(IDD_DIAGNOSTICS, nullptr));
        // What an earlier report left in the view.
        window_.View().Append(L"an earlier report\n");
    }
    // Asks for the report as the main window does and answers the box.
    SeenBox ShowReport() {
        MessageBoxAnswerer answerer(::GetCurrentThreadId());
        window_.ShowFreshReport(WithoutLocalTime());
        return answerer.Seen();
    }

    CDiagWinDlg window_{nullptr};
};

}  // namespace

TEST_F(ReportWindowWithoutLocalTime, LeavesTheViewEmptyAndSaysWhy) {
    ScopedLanguage english(true);
    const SeenBox box = ShowReport();
    ASSERT_TRUE(box.seen) << "no message box";
    EXPECT_EQ(box.text,
              L"The report could not be made: the local time could not be read. Check this computer's date and time.");
    EXPECT_EQ(box.caption, L"unit_tests");
    EXPECT_EQ(box.buttonIds, std::vector<int>{IDOK});
    EXPECT_EQ(box.icon, ::LoadIconW(nullptr, IDI_ERROR));
    // Over the Diagnostics window, already on screen with its empty view.
    EXPECT_EQ(box.owner, window_.Hwnd());
    EXPECT_TRUE(box.ownerVisible);
    EXPECT_TRUE(::IsWindowVisible(window_.Hwnd()));
    EXPECT_EQ(window_.View().Text(), L"");
}

TEST_F(ReportWindowWithoutLocalTime, SaysWhyInFrench) {
    ScopedLanguage french(false);
    const SeenBox box = ShowReport();
    ASSERT_TRUE(box.seen) << "no message box";
    EXPECT_EQ(box.text,
              L"Le rapport n'a pas pu \u00eatre \u00e9tabli : l'heure locale n'a pas pu \u00eatre lue. "
              L"V\u00e9rifiez la date et l'heure de cet ordinateur.");
    EXPECT_EQ(box.buttonIds, std::vector<int>{IDOK});
    EXPECT_EQ(window_.View().Text(), L"");
}
