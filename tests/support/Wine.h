// Where a test's set-up lives. Some set-ups only Wine allows: a time zone
// taken from the Unix TZ of one process, a user locale from LC_ALL, the
// screen's DPI from the prefix's registry, a Windows version chosen per
// program, a machine whose own registry and Program Files a test may change
// because the whole prefix is thrown away afterwards. Those tests run under
// Wine and, on Windows, skip with the reason (tests/CMakeLists.txt labels
// them "wine-only"). Tests that need the administrator's token skip without
// it: Wine gives it to every process, Windows only to an elevated prompt.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include "w32/Scoped.h"

namespace testsupport {

// Wine's ntdll exports wine_get_version; Windows's never has.
inline bool RunningUnderWine() {
    const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    return ntdll != nullptr && ::GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

// Under Wine the user locale comes from LC_ALL, which ctest sets for each
// suite; on Windows, and under Wine from run-tests.cmd, it is the machine's.
inline bool UserLocaleIsFrench() {
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
    ::GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH);
    return name[0] == L'f' && name[1] == L'r';
}

inline bool RunningElevated() {
    w32::ScopedHandle token;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, token.Put())) return false;
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    return ::GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof(elevation), &size) &&
           elevation.TokenIsElevated != 0;
}

}  // namespace testsupport

// One statement at the top of a test or of its fixture's SetUp. A fixture
// that skips in SetUp still runs its TearDown: that must then clean up only
// what SetUp made (an empty folder name is the root of the drive).
#define SKIP_UNLESS_WINE(why) \
    if (!::testsupport::RunningUnderWine()) GTEST_SKIP() << "only under Wine: " << (why)
#define SKIP_IF_FRENCH_USER() \
    if (::testsupport::UserLocaleIsFrench()) \
    GTEST_SKIP() << "expects the English interface, and the user locale is French (LC_ALL under Wine)"
#define SKIP_UNLESS_FRENCH_USER() \
    if (!::testsupport::UserLocaleIsFrench()) \
    GTEST_SKIP() << "expects a French user locale (under Wine: LC_ALL=fr_FR.UTF-8, as ctest sets it)"
#define SKIP_UNLESS_ELEVATED() \
    if (!::testsupport::RunningElevated()) GTEST_SKIP() << "needs an elevated process (run the tests as administrator)"
