// Real queries against the machine's WMI service (Wine's under test).
#include "collect/WmiQuery.h"

#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "collect/ReportTestSupport.h"

namespace {

// Captures the log lines of one test.
class WmiQueryTest : public testing::Test {
protected:
    void SetUp() override {
        SetLogSink([this](const std::string& line) { log_.push_back(line); });
    }
    void TearDown() override { SetLogSink({}); }
    std::vector<std::string> log_;
};

struct ReportValue {
    const wchar_t* className;
    const wchar_t* propertyName;
};

// The five values that every report asks for.
constexpr ReportValue kReportValues[] = {
    {L"Win32_ComputerSystem", L"Name"},  {L"Win32_ComputerSystem", L"Domain"},
    {L"Win32_OperatingSystem", L"Version"}, {L"Win32_BIOS", L"Name"},
    {L"Win32_BaseBoard", L"Manufacturer"},
};

std::wstring ComputerName() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    ::GetComputerNameW(name, &size);
    return name;
}

// An optical drive would make Win32_CDROMDrive list an instance.
bool HasCdromDrive() {
    const DWORD drives = ::GetLogicalDrives();
    for (int i = 0; i < 26; ++i) {
        const std::wstring root = std::wstring(1, static_cast<wchar_t>(L'A' + i)) + L":\\";
        if ((drives & (1u << i)) && ::GetDriveTypeW(root.c_str()) == DRIVE_CDROM) return true;
    }
    return false;
}

}  // namespace

TEST_F(WmiQueryTest, TheFiveReportValuesAreRead) {
    EXPECT_EQ(QueryWmiProperty(L"Win32_ComputerSystem", L"Name"), ComputerName());
    EXPECT_EQ(QueryWmiProperty(L"Win32_ComputerSystem", L"Domain"), L"WORKGROUP");
    EXPECT_FALSE(QueryWmiProperty(L"Win32_OperatingSystem", L"Version").empty());
    EXPECT_FALSE(QueryWmiProperty(L"Win32_BIOS", L"Name").empty());
    EXPECT_FALSE(QueryWmiProperty(L"Win32_BaseBoard", L"Manufacturer").empty());
    EXPECT_TRUE(log_.empty());
}

TEST_F(WmiQueryTest, OperatingSystemVersionIsMajorMinorBuild) {
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    using RtlGetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);
    const auto rtlGetVersion = reinterpret_cast<RtlGetVersionFunction>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
    ASSERT_NE(rtlGetVersion, nullptr);
    ASSERT_EQ(rtlGetVersion(&version), 0);
    EXPECT_EQ(QueryWmiProperty(L"Win32_OperatingSystem", L"Version"),
              std::to_wstring(version.dwMajorVersion) + L"." + std::to_wstring(version.dwMinorVersion) + L"." +
                  std::to_wstring(version.dwBuildNumber));
}

TEST_F(WmiQueryTest, FiveCallsInARowAllSucceed) {
    // The first call sets the process's COM security; the others are told
    // RPC_E_TOO_LATE and must go on.
    for (const ReportValue& value : kReportValues) {
        EXPECT_FALSE(QueryWmiProperty(value.className, value.propertyName).empty()) << value.className;
    }
    for (const ReportValue& value : kReportValues) {
        EXPECT_FALSE(QueryWmiProperty(value.className, value.propertyName).empty()) << value.className;
    }
    EXPECT_TRUE(log_.empty());
}

TEST_F(WmiQueryTest, SeveralInstancesGiveTheLastOneEnumerated) {
    // wmic enumerates the same class through WMI: its last row is the last
    // instance enumerated, whatever order this machine's WMI keeps (which
    // drives it counts as logical disks is WMI's choice too, so the drive
    // letters alone could not tell).
    if (!WmicIsThere()) GTEST_SKIP() << kNoWmic;
    const std::vector<std::wstring> disks = WmicValues(L"logicaldisk", L"name");
    ASSERT_FALSE(disks.empty()) << "wmic lists no logical disk";
    if (disks.size() < 2) GTEST_SKIP() << "needs two logical disks; this machine has " << disks.size();
    EXPECT_EQ(QueryWmiProperty(L"Win32_LogicalDisk", L"Name"), disks.back());
    EXPECT_TRUE(log_.empty());
}

TEST_F(WmiQueryTest, QueryThatMatchesNothingGivesEmptyTextAndNoLogLine) {
    // No process has this name on any machine.
    EXPECT_EQ(QueryWmiProperty(L"Win32_Process WHERE Name = 'orvane-no-such-process.exe'", L"Name"), L"");
    EXPECT_TRUE(log_.empty());
}

TEST_F(WmiQueryTest, ClassWithoutInstancesGivesEmptyTextAndNoLogLine) {
    if (HasCdromDrive()) GTEST_SKIP() << "this machine has an optical drive: Win32_CDROMDrive has instances";
    EXPECT_EQ(QueryWmiProperty(L"Win32_CDROMDrive", L"Name"), L"");
    EXPECT_TRUE(log_.empty());
}

TEST_F(WmiQueryTest, FailingQueryLogsTheOperatingSystemText) {
    // Win32_SID cannot be enumerated without a WHERE clause.
    EXPECT_EQ(QueryWmiProperty(L"Win32_SID", L"SID"), L"");
    ASSERT_EQ(log_.size(), 1u);
    EXPECT_EQ(log_[0], "Query for operating system name failed. Error code = 0x80041001");
}

TEST_F(WmiQueryTest, MalformedClassNameLogsTheOperatingSystemTextWithItsCode) {
    EXPECT_EQ(QueryWmiProperty(L"Win32_BIOS WHERE", L"Name"), L"");
    ASSERT_EQ(log_.size(), 1u);
    EXPECT_EQ(log_[0], "Query for operating system name failed. Error code = 0x80041017");
}

TEST_F(WmiQueryTest, UnknownClassGivesEmptyText) {
    // Windows refuses an unknown class (WBEM_E_INVALID_CLASS); Wine answers
    // it with no rows. Either way the value is empty.
    EXPECT_EQ(QueryWmiProperty(L"Win32_NoSuchClass", L"Name"), L"");
    if (!log_.empty()) {
        ASSERT_EQ(log_.size(), 1u);
        EXPECT_EQ(log_[0], "Query for operating system name failed. Error code = 0x80041010");
    }
}

TEST_F(WmiQueryTest, FailedConnectionIsLoggedAndTheNextQueryStartsAfresh) {
    EXPECT_EQ(QueryWmiPropertyIn(L"ROOT\\NOSUCHNAMESPACE", L"Win32_BIOS", L"Name"), L"");
    ASSERT_EQ(log_.size(), 1u);
    EXPECT_EQ(log_[0], "Could not connect. Error code = 0x8004100e");
    EXPECT_FALSE(QueryWmiProperty(L"Win32_BIOS", L"Name").empty());
    EXPECT_EQ(log_.size(), 1u);
}

TEST_F(WmiQueryTest, MissingNullAndNonStringPropertiesGiveEmptyText) {
    EXPECT_EQ(QueryWmiProperty(L"Win32_OperatingSystem", L"NoSuchProperty"), L"");  // missing
    EXPECT_EQ(QueryWmiProperty(L"Win32_OperatingSystem", L"OSLanguage"), L"");      // a number (VT_I4)
    EXPECT_EQ(QueryWmiProperty(L"Win32_BIOS", L"IdentificationCode"), L"");         // null (VT_NULL)
    EXPECT_TRUE(log_.empty());
}

TEST_F(WmiQueryTest, SingleThreadedApartmentFailsAtTheFirstStep) {
    std::wstring value = L"unchanged";
    std::thread caller([&value] {
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        value = QueryWmiProperty(L"Win32_BIOS", L"Name");
        ::CoUninitialize();
    });
    caller.join();
    EXPECT_EQ(value, L"");
    ASSERT_EQ(log_.size(), 1u);
    EXPECT_EQ(log_[0], "Failed to initialize COM library. Error code = 0x80010106");  // RPC_E_CHANGED_MODE
}

TEST_F(WmiQueryTest, FromAnyThreadReadsTheValueInASingleThreadedApartment) {
    const std::wstring expected = QueryWmiProperty(L"Win32_BIOS", L"Name");
    ASSERT_FALSE(expected.empty());
    std::wstring value;
    HRESULT stillSingleThreaded = E_FAIL;
    std::thread caller([&] {
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        value = QueryWmiPropertyFromAnyThread(L"Win32_BIOS", L"Name");
        stillSingleThreaded = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);  // S_FALSE: unchanged
        ::CoUninitialize();
        ::CoUninitialize();
    });
    caller.join();
    EXPECT_EQ(value, expected);
    EXPECT_EQ(stillSingleThreaded, S_FALSE);
    EXPECT_TRUE(log_.empty());
}

TEST_F(WmiQueryTest, FromAnyThreadQueriesInPlaceOutsideASingleThreadedApartment) {
    EXPECT_EQ(QueryWmiPropertyFromAnyThread(L"Win32_OperatingSystem", L"Version"),
              QueryWmiProperty(L"Win32_OperatingSystem", L"Version"));
    EXPECT_TRUE(log_.empty());
}

TEST_F(WmiQueryTest, ApartmentOfTheCallingThreadIsLeftAsItWas) {
    // A thread already in the multithreaded apartment stays in it (S_FALSE
    // is balanced by the query's own uninitialisation).
    ASSERT_TRUE(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
    EXPECT_FALSE(QueryWmiProperty(L"Win32_BIOS", L"Name").empty());
    EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
    ::CoUninitialize();
    ::CoUninitialize();
}

TEST_F(WmiQueryTest, LogMessageIsCutAtOneThousandTwentyThreeCharacters) {
    const std::string longText(2000, 'x');
    WriteLog("%s", longText.c_str());
    ASSERT_EQ(log_.size(), 1u);
    EXPECT_EQ(log_[0], std::string(1023, 'x'));
}
