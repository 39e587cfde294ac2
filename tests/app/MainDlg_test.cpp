// The main window in-process: system menu, title, tooltips and icon.
#include "app/MainDlg.h"

#include <gtest/gtest.h>

#include "resource.h"
#include "support/TestApp.h"
#include "support/Wine.h"
#include "w32/Text.h"

namespace {

struct MenuEntry {
    UINT id;
    std::wstring text;
    UINT state;  // MF_DISABLED / MF_GRAYED / MF_SEPARATOR bits
    bool operator==(const MenuEntry&) const = default;
};

std::ostream& operator<<(std::ostream& out, const MenuEntry& e) {
    return out << "{" << e.id << ", " << testing::PrintToString(e.text) << ", " << e.state << "}";
}

std::vector<MenuEntry> EntriesOf(HMENU menu) {
    std::vector<MenuEntry> entries;
    for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
        wchar_t text[128] = {};
        ::GetMenuStringW(menu, i, text, 128, MF_BYPOSITION);
        UINT state = ::GetMenuState(menu, i, MF_BYPOSITION) & (MF_DISABLED | MF_GRAYED | MF_SEPARATOR);
        if (state & MF_SEPARATOR) state = MF_SEPARATOR;  // separators also read as greyed
        entries.push_back({::GetMenuItemID(menu, i), text, state});
    }
    return entries;
}

std::vector<MenuEntry> MenuFor(bool elevated) {
    HMENU menu = ::CreatePopupMenu();
    AppendMainSystemMenuEntries(menu, elevated);
    std::vector<MenuEntry> entries = EntriesOf(menu);
    ::DestroyMenu(menu);
    return entries;
}

class MainWindow : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dialog_.Create(IDD_MAIN_EN, nullptr)); }
    CMainDlg dialog_{IDD_MAIN_EN};
};

NMTTDISPINFOW TooltipRequestFor(HWND tool, UINT flags) {
    NMTTDISPINFOW request{};
    request.hdr.hwndFrom = nullptr;
    request.hdr.idFrom = reinterpret_cast<UINT_PTR>(tool);
    request.hdr.code = TTN_NEEDTEXTW;
    request.uFlags = flags;
    request.hinst = reinterpret_cast<HINSTANCE>(0x1234);
    wcscpy(request.szText, L"untouched");
    return request;
}

}  // namespace

TEST(MainSystemMenu, ElevatedEntryIsDisabledButNotGreyed) {
    ScopedLanguage english(true);
    const std::vector<MenuEntry> expected = {
        {0, L"", MF_SEPARATOR},
        {IDM_RUN_AS_ADMIN, L"Launched as Administrator", MF_DISABLED},
        {0, L"", MF_SEPARATOR},
        {IDM_ABOUTBOX, L"&About Orvane Diagnostics...", 0},
    };
    EXPECT_EQ(MenuFor(true), expected);
}

TEST(MainSystemMenu, NotElevatedOffersTheRelaunch) {
    ScopedLanguage english(true);
    const std::vector<MenuEntry> expected = {
        {0, L"", MF_SEPARATOR},
        {IDM_RUN_AS_ADMIN, L"Relaunch as Administrator...", 0},
        {0, L"", MF_SEPARATOR},
        {IDM_ABOUTBOX, L"&About Orvane Diagnostics...", 0},
    };
    EXPECT_EQ(MenuFor(false), expected);
}

TEST(MainSystemMenu, FrenchEntries) {
    ScopedLanguage french(false);
    EXPECT_EQ(MenuFor(true)[1], (MenuEntry{IDM_RUN_AS_ADMIN, L"Exécution en Administrateur", MF_DISABLED}));
    EXPECT_EQ(MenuFor(false)[1], (MenuEntry{IDM_RUN_AS_ADMIN, L"Relancer en Administrateur...", 0}));
    EXPECT_EQ(MenuFor(false)[3], (MenuEntry{IDM_ABOUTBOX, L"&À propos de Diagnostics Orvane...", 0}));
}

TEST_F(MainWindow, WindowSystemMenuEndsWithOurEntries) {
    SKIP_UNLESS_ELEVATED();
    const std::vector<MenuEntry> entries = EntriesOf(::GetSystemMenu(dialog_.Hwnd(), FALSE));
    ASSERT_GE(entries.size(), 4u);
    // Wine runs every process elevated.
    EXPECT_EQ(entries[entries.size() - 3], (MenuEntry{IDM_RUN_AS_ADMIN, L"Launched as Administrator", MF_DISABLED}));
    EXPECT_EQ(entries.back(), (MenuEntry{IDM_ABOUTBOX, L"&About Orvane Diagnostics...", 0}));
}

TEST_F(MainWindow, TitleCarriesMarkVersionAndBits) {
    SKIP_UNLESS_ELEVATED();
    EXPECT_EQ(w32::GetWindowTextString(dialog_.Hwnd()), L"Orvane Diagnostics [Administrator] 9.3.1.1042 (64 bits)");
}

TEST_F(MainWindow, TooltipOfTheReportButtonIsItsText) {
    NMTTDISPINFOW request = TooltipRequestFor(dialog_.Item(IDC_SYSTEM_REPORT), TTF_IDISHWND);
    LRESULT result = 0;
    EXPECT_TRUE(dialog_.OnToolTipNotify(0, &request.hdr, &result));
    EXPECT_STREQ(request.szText, L"System report");
    EXPECT_EQ(request.hinst, nullptr);
}

TEST_F(MainWindow, TooltipKeepsSeventyNineCharacters) {
    HWND button = dialog_.Item(IDC_SYSTEM_REPORT);
    ::SetWindowTextW(button, std::wstring(120, L'w').c_str());
    NMTTDISPINFOW request = TooltipRequestFor(button, TTF_IDISHWND);
    LRESULT result = 0;
    EXPECT_TRUE(dialog_.OnToolTipNotify(0, &request.hdr, &result));
    EXPECT_EQ(std::wstring(request.szText), std::wstring(79, L'w'));
}

TEST_F(MainWindow, TooltipIgnoresRequestsNotByWindowHandle) {
    NMTTDISPINFOW request = TooltipRequestFor(dialog_.Item(IDC_SYSTEM_REPORT), 0);
    LRESULT result = 0;
    EXPECT_FALSE(dialog_.OnToolTipNotify(0, &request.hdr, &result));
    EXPECT_STREQ(request.szText, L"untouched");
    EXPECT_EQ(request.hinst, reinterpret_cast<HINSTANCE>(0x1234));
}

TEST_F(MainWindow, TooltipIgnoresControlsOutsideTheRange) {
    for (int id : {1005, 1016}) {
        HWND other = ::CreateWindowExW(0, L"BUTTON", L"other", WS_CHILD, 0, 0, 10, 10, dialog_.Hwnd(),
                                       reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
        NMTTDISPINFOW request = TooltipRequestFor(other, TTF_IDISHWND);
        LRESULT result = 0;
        EXPECT_FALSE(dialog_.OnToolTipNotify(0, &request.hdr, &result)) << id;
        EXPECT_STREQ(request.szText, L"untouched");
        ::DestroyWindow(other);
    }
}

TEST_F(MainWindow, TooltipCoversControls1006To1015) {
    for (int id : {1006, 1015}) {
        HWND other = ::CreateWindowExW(0, L"BUTTON", L"edge", WS_CHILD, 0, 0, 10, 10, dialog_.Hwnd(),
                                       reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
        NMTTDISPINFOW request = TooltipRequestFor(other, TTF_IDISHWND);
        LRESULT result = 0;
        EXPECT_TRUE(dialog_.OnToolTipNotify(0, &request.hdr, &result)) << id;
        EXPECT_STREQ(request.szText, L"edge");
        ::DestroyWindow(other);
    }
}

TEST_F(MainWindow, DraggedIconIsTheApplicationIcon) {
    const auto icon = reinterpret_cast<HICON>(::SendMessageW(dialog_.Hwnd(), WM_QUERYDRAGICON, 0, 0));
    EXPECT_NE(icon, nullptr);
    EXPECT_EQ(icon, reinterpret_cast<HICON>(::SendMessageW(dialog_.Hwnd(), WM_GETICON, ICON_BIG, 0)));
}

TEST_F(MainWindow, ReportButtonDrawsItsImages) {
    // The button is owner-drawn: its caption is not painted, only its image.
    HWND button = dialog_.Item(IDC_SYSTEM_REPORT);
    EXPECT_TRUE(::GetWindowLongW(button, GWL_STYLE) & BS_OWNERDRAW);
    EXPECT_EQ(w32::GetWindowTextString(button), L"System report");
}
