// GDI+ is started only on screens that are not at 96 DPI.
#include <gtest/gtest.h>

#include "e2e/Driver.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

using namespace e2e;

namespace {

constexpr wchar_t kDesktopKey[] = L"Control Panel\\Desktop";

class ScreenDpi : public testing::Test {
protected:
    void SetUp() override { SKIP_UNLESS_WINE("Windows reads the screen's DPI from LogPixels only at the next sign-in"); }
    // Only Wine's throwaway prefix gets its LogPixels set, and removed again.
    void TearDown() override {
        if (testsupport::RunningUnderWine()) ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels");
    }

    static void SetDpi(DWORD dpi) {
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels", REG_DWORD, &dpi, sizeof(dpi)),
                  ERROR_SUCCESS);
    }

    static bool GdiplusLoadedInMainWindow() {
        Program program;
        HWND main = program.WaitForMainWindow();
        EXPECT_NE(main, nullptr);
        return IsModuleLoaded(program.Pid(), L"gdiplus.dll");
    }
};

}  // namespace

TEST_F(ScreenDpi, At96DpiGdiplusIsNeverStarted) {
    SetDpi(96);
    EXPECT_FALSE(GdiplusLoadedInMainWindow());
}

TEST_F(ScreenDpi, At120DpiGdiplusIsStarted) {
    SetDpi(120);
    EXPECT_TRUE(GdiplusLoadedInMainWindow());
}
