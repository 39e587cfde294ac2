// The report view in-process: its format, its capacity, and the text it
// gives back for saving.
#include "diagwin/ReportView.h"

#include <windows.h>
#include <richedit.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "collect/ReportFile.h"
#include "format/ReportChecksum.h"
#include "format/ViewText.h"
#include "resource.h"
#include "support/TempDirectory.h"
#include "w32/Dialog.h"

namespace {

// The Diagnostics window's template, without the window's behaviour.
class ViewHost : public w32::Dialog {
public:
    ViewHost() { Create(IDD_DIAGNOSTICS, nullptr); }
};

class ReportViewTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(host_.Hwnd(), nullptr);
        view_.Attach(host_.Item(IDC_REPORT_VIEW));
        view_.SetReportFormat();
    }

    CHARFORMAT2W FormatOf(WPARAM which) {
        CHARFORMAT2W format{};
        format.cbSize = sizeof(format);
        ::SendMessageW(view_.Hwnd(), EM_GETCHARFORMAT, which, reinterpret_cast<LPARAM>(&format));
        return format;
    }

    ViewHost host_;
    ReportView view_;
};

std::string ReadBytes(const std::wstring& path) {
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

TEST_F(ReportViewTest, TextIsNinePointBlackCourierNew) {
    view_.Clear();
    view_.Append(L"Orvane Software system report\n");
    for (WPARAM which : {WPARAM(SCF_DEFAULT), WPARAM(SCF_ALL)}) {
        const CHARFORMAT2W format = FormatOf(which);
        EXPECT_STREQ(format.szFaceName, L"Courier New") << which;
        EXPECT_EQ(format.yHeight, 180) << which;
        EXPECT_EQ(format.crTextColor, RGB(0, 0, 0)) << which;
        EXPECT_FALSE(format.dwEffects & CFE_AUTOCOLOR) << which;
    }
}

TEST_F(ReportViewTest, ClearThenAppendBuildsTheTextInOrder) {
    view_.Append(L"old report\n");
    view_.Clear();
    view_.Append(L"\nProgram:\n");
    view_.Append(L"in C:\\x\n");
    EXPECT_EQ(view_.Text(), L"\r\nProgram:\r\nin C:\\x\r\n");
}

TEST_F(ReportViewTest, GivesBackWhatAsViewTextPredicts) {
    const std::wstring appended = L"a\nb\r\nc\rd\t\u00e9\u20ac\n\n";
    view_.Clear();
    view_.Append(appended);
    EXPECT_EQ(view_.Text(), AsViewText(appended));
}

TEST_F(ReportViewTest, HoldsMoreThan200000Characters) {
    std::wstring line(99, L'x');
    line += L'\n';
    view_.Clear();
    for (int i = 0; i < 2500; ++i) view_.Append(line);
    const std::wstring text = view_.Text();
    EXPECT_EQ(text.size(), 2500u * 101u);
    EXPECT_EQ(text.substr(text.size() - 101), std::wstring(99, L'x') + L"\r\n");
}

// Pieces that split line breaks in every way, and enough text to be
// inserted in several gathered parts.
std::vector<std::wstring> AwkwardPieces() {
    std::vector<std::wstring> pieces = {L"\nProgram:\n", L"a\r", L"\nb", L"c\r", L"\r\n", L"d\r\r",
                                        L"\n",          L"\r",   L"e\n", L"",    L"\n\r", L"f"};
    for (int i = 0; i < 3000; ++i) pieces.push_back(L"\tline " + std::to_wstring(i) + std::wstring(40, L'x') + L"\n");
    pieces.push_back(L"g\r");
    pieces.push_back(L"\nlast");
    return pieces;
}

TEST_F(ReportViewTest, RefillGivesTheTextThatPieceByPieceGives) {
    view_.Clear();
    for (const std::wstring& piece : AwkwardPieces()) view_.Append(piece);
    const std::wstring pieceByPiece = view_.Text();
    {
        const ReportView::Refill refill(view_);
        for (const std::wstring& piece : AwkwardPieces()) view_.Append(piece);
    }
    EXPECT_EQ(view_.Text(), pieceByPiece);
    EXPECT_EQ(view_.Text().rfind(L"\r\nProgram:\r\na", 0), 0u);
    EXPECT_NE(view_.Text().find(L"\r\n\tline 2999" + std::wstring(40, L'x') + L"\r\ng"), std::wstring::npos);
}

TEST_F(ReportViewTest, RefillReplacesTheTextAndShowsItsStartInTheReportFormat) {
    std::wstring line(99, L'y');
    line += L'\n';
    for (int i = 0; i < 500; ++i) view_.Append(line);
    ::SendMessageW(view_.Hwnd(), WM_VSCROLL, SB_BOTTOM, 0);
    ASSERT_GT(::SendMessageW(view_.Hwnd(), EM_GETFIRSTVISIBLELINE, 0, 0), 0);
    {
        const ReportView::Refill refill(view_);
        for (int i = 0; i < 2500; ++i) view_.Append(std::wstring(99, L'x') + L"\n");
    }
    const std::wstring text = view_.Text();
    EXPECT_EQ(text.size(), 2500u * 101u);
    EXPECT_EQ(text.find(L'y'), std::wstring::npos);
    EXPECT_EQ(::SendMessageW(view_.Hwnd(), EM_GETFIRSTVISIBLELINE, 0, 0), 0);
    CHARRANGE selection{-1, -1};
    ::SendMessageW(view_.Hwnd(), EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&selection));
    EXPECT_EQ(selection.cpMin, 0);
    EXPECT_EQ(selection.cpMax, 0);
    const CHARFORMAT2W format = FormatOf(SCF_ALL);
    EXPECT_STREQ(format.szFaceName, L"Courier New");
    EXPECT_EQ(format.yHeight, 180);
    EXPECT_EQ(format.crTextColor, RGB(0, 0, 0));
    // Drawing is on again once the report is in.
    EXPECT_TRUE(::GetWindowLongW(view_.Hwnd(), GWL_STYLE) & WS_VISIBLE);
}

// A view that holds a report is not emptied but replaced: the new control
// must be the old one's twin in everything the window and the user rely on.
TEST_F(ReportViewTest, RefillOfAFullViewPutsATwinInItsPlace) {
    for (int i = 0; i < 500; ++i) view_.Append(std::wstring(99, L'y') + L"\n");
    const HWND old = view_.Hwnd();
    const HWND before = ::GetWindow(old, GW_HWNDPREV);
    const HWND after = ::GetWindow(old, GW_HWNDNEXT);
    const LONG style = ::GetWindowLongW(old, GWL_STYLE);
    const LONG exStyle = ::GetWindowLongW(old, GWL_EXSTYLE);
    RECT oldRect{};
    ::GetWindowRect(old, &oldRect);
    const CHARFORMAT2W oldDefault = FormatOf(SCF_DEFAULT);
    const CHARFORMAT2W oldAll = FormatOf(SCF_ALL);
    ::SetFocus(old);
    ASSERT_EQ(::GetFocus(), old);
    {
        const ReportView::Refill refill(view_);
        view_.Append(L"a new report\n");
    }
    const HWND twin = view_.Hwnd();
    EXPECT_NE(twin, old);
    EXPECT_FALSE(::IsWindow(old));
    EXPECT_EQ(::GetDlgItem(host_.Hwnd(), IDC_REPORT_VIEW), twin);
    wchar_t className[64] = L"";
    ::GetClassNameW(twin, className, 64);
    EXPECT_STREQ(className, L"RichEdit50W");
    EXPECT_EQ(::GetWindowLongW(twin, GWL_STYLE), style);
    EXPECT_EQ(::GetWindowLongW(twin, GWL_EXSTYLE), exStyle);
    RECT twinRect{};
    ::GetWindowRect(twin, &twinRect);
    EXPECT_TRUE(::EqualRect(&twinRect, &oldRect));
    EXPECT_EQ(::GetWindow(twin, GW_HWNDPREV), before);
    EXPECT_EQ(::GetWindow(twin, GW_HWNDNEXT), after);
    // The same characters: face, size, colour, weight, effects, character set.
    for (const auto& [twinFormat, oldFormat] : {std::pair{FormatOf(SCF_DEFAULT), oldDefault}, {FormatOf(SCF_ALL), oldAll}}) {
        EXPECT_STREQ(twinFormat.szFaceName, oldFormat.szFaceName);
        EXPECT_EQ(twinFormat.yHeight, oldFormat.yHeight);
        EXPECT_EQ(twinFormat.crTextColor, oldFormat.crTextColor);
        EXPECT_EQ(twinFormat.wWeight, oldFormat.wWeight);
        EXPECT_EQ(twinFormat.dwEffects, oldFormat.dwEffects);
        EXPECT_EQ(twinFormat.bCharSet, oldFormat.bCharSet);
        EXPECT_EQ(twinFormat.bPitchAndFamily, oldFormat.bPitchAndFamily);
    }
    EXPECT_EQ(::GetFocus(), twin);
    EXPECT_EQ(::SendMessageW(twin, EM_GETLIMITTEXT, 0, 0), 0x7FFFFFFE);
    EXPECT_EQ(view_.Text(), L"a new report\r\n");
    const CHARFORMAT2W format = FormatOf(SCF_ALL);
    EXPECT_STREQ(format.szFaceName, L"Courier New");
    EXPECT_EQ(format.yHeight, 180);
    EXPECT_EQ(format.crTextColor, RGB(0, 0, 0));
}

// The first report goes into the window's own, still empty, view.
TEST_F(ReportViewTest, RefillOfAnEmptyViewKeepsTheControl) {
    const HWND control = view_.Hwnd();
    {
        const ReportView::Refill refill(view_);
        view_.Append(L"the first report\n");
    }
    EXPECT_EQ(view_.Hwnd(), control);
    EXPECT_EQ(view_.Text(), L"the first report\r\n");
}

TEST_F(ReportViewTest, IsReadOnlyForTheUser) {
    EXPECT_TRUE(::GetWindowLongW(view_.Hwnd(), GWL_STYLE) & ES_READONLY);
}

TEST(ReportFileTest, EmptyViewSavesThirtyTwoBytes) {
    const TempDirectory dir;
    const std::wstring path = dir / L"report.txt";
    ASSERT_EQ(WriteReportFile(path, L""), ReportFileOutcome::kWritten);
    const std::string bytes = ReadBytes(path);
    EXPECT_EQ(bytes, std::string("\xFF\xFE\n\0-\0-\0-\0 \0\n\0" "0\0" "1\0" "0\0" "2\0" "0\0" "3\0" "0\0" "4\0\n\0", 32));
}

TEST(ReportFileTest, OverwritingALongerFileLeavesNothingOfIt) {
    const TempDirectory dir;
    const std::wstring path = dir / L"report.txt";
    {
        std::ofstream old(std::filesystem::path(path), std::ios::binary);
        old << std::string(100000, 'z');
    }
    ASSERT_EQ(WriteReportFile(path, L"AB"), ReportFileOutcome::kWritten);
    EXPECT_EQ(ReadBytes(path), BuildReportFileBytes(u"AB"));
}

TEST(ReportFileTest, FolderThatDoesNotExistCannotBeOpened) {
    EXPECT_EQ(WriteReportFile(L"C:\\no such folder 4711\\report.txt", L"AB"), ReportFileOutcome::kCannotOpen);
}
