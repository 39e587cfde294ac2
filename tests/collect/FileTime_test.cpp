// File times in local time. Wine takes the time zone from the Unix TZ of
// each process, so the tests with summer time run in a process of their own
// that ctest starts with TZ set to the rule of Paris (tests/CMakeLists.txt).
#include "collect/DirectoryListing.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cwchar>

#include "support/Wine.h"

namespace {
// Central European Time with its summer time, as a POSIX rule: it needs no
// time zone database on the host.
constexpr wchar_t kParisRule[] = L"CET-1CEST,M3.5.0,M10.5.0/3";

FILETIME Utc(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second) {
    const SYSTEMTIME time{year, month, 0, day, hour, minute, second, 0};
    FILETIME result{};
    ::SystemTimeToFileTime(&time, &result);
    return result;
}

std::wstring EnvironmentTz() {
    wchar_t value[128] = {};
    ::GetEnvironmentVariableW(L"TZ", value, 128);
    return value;
}

class FileTimeInParis : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("the time zone comes from this process's Unix TZ");
        if (EnvironmentTz() != kParisRule) GTEST_SKIP() << "runs in its own process, started with TZ=CET-1CEST,...";
        TIME_ZONE_INFORMATION zone{};
        ::GetTimeZoneInformation(&zone);
        ASSERT_EQ(zone.Bias, -60);
        ASSERT_EQ(zone.DaylightBias, -60);
    }
};
}  // namespace

TEST_F(FileTimeInParis, WinterTimeIsOneHourAhead) {
    EXPECT_EQ(FormatFileTime(Utc(2021, 3, 7, 13, 5, 9)), L"07/03/2021  14:05:09");
}

TEST_F(FileTimeInParis, SummerTimeIsTwoHoursAhead) {
    EXPECT_EQ(FormatFileTime(Utc(2021, 7, 14, 10, 0, 0)), L"14/07/2021  12:00:00");
}

TEST_F(FileTimeInParis, SpringForwardOnTheLastSundayOfMarch) {
    EXPECT_EQ(FormatFileTime(Utc(2021, 3, 28, 0, 59, 59)), L"28/03/2021  01:59:59");
    EXPECT_EQ(FormatFileTime(Utc(2021, 3, 28, 1, 0, 0)), L"28/03/2021  03:00:00");
}

TEST_F(FileTimeInParis, FallBackOnTheLastSundayOfOctober) {
    EXPECT_EQ(FormatFileTime(Utc(2021, 10, 31, 0, 59, 59)), L"31/10/2021  02:59:59");
    EXPECT_EQ(FormatFileTime(Utc(2021, 10, 31, 1, 0, 0)), L"31/10/2021  02:00:00");
}

TEST_F(FileTimeInParis, RulesOfTheDateShownNotOfToday) {
    // Summer time in another year, and the year's last hour running into the next.
    EXPECT_EQ(FormatFileTime(Utc(2009, 6, 1, 21, 30, 0)), L"01/06/2009  23:30:00");
    EXPECT_EQ(FormatFileTime(Utc(2021, 12, 31, 23, 30, 0)), L"01/01/2022  00:30:00");
}

TEST(FileTime, ZoneWithoutSummerTimeShiftsByItsBias) {
    TIME_ZONE_INFORMATION zone{};
    ::GetTimeZoneInformation(&zone);
    if (zone.DaylightDate.wMonth != 0) GTEST_SKIP() << "the zone has summer time";
    ULARGE_INTEGER ticks{};
    const FILETIME utc = Utc(2021, 3, 7, 13, 5, 9);
    ticks.LowPart = utc.dwLowDateTime;
    ticks.HighPart = utc.dwHighDateTime;
    ticks.QuadPart -= static_cast<LONGLONG>(zone.Bias) * 60 * 10000000;
    const FILETIME shifted{ticks.LowPart, ticks.HighPart};
    SYSTEMTIME local{};
    ::FileTimeToSystemTime(&shifted, &local);
    wchar_t expected[32] = {};
    std::swprintf(expected, 32, L"%02d/%02d/%04d  %02d:%02d:%02d", local.wDay, local.wMonth, local.wYear, local.wHour,
                  local.wMinute, local.wSecond);
    EXPECT_EQ(FormatFileTime(utc), expected);
}
