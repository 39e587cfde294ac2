#include "format/InstallationText.h"

#include <gtest/gtest.h>

TEST(InstallationDirectories, StandardDirectoryIsUnderProgramFiles) {
    EXPECT_EQ(StandardInstallationDirectory(L"C:\\Program Files"), L"C:\\Program Files\\Orvane Software V9");
}

TEST(InstallationDirectories, SharedDirectoriesAreUnderCommonAppData) {
    EXPECT_EQ(SharedParametersDirectory(L"C:\\ProgramData"), L"C:\\ProgramData\\Orvane Software");
    EXPECT_EQ(SharedBatchDirectory(L"C:\\ProgramData"), L"C:\\ProgramData\\Orvane Software\\Runner");
}

TEST(InstallationDirectories, AnEmptyBaseGivesRootedNames) {
    EXPECT_EQ(StandardInstallationDirectory(L""), L"\\Orvane Software V9");
    EXPECT_EQ(SharedParametersDirectory(L""), L"\\Orvane Software");
    EXPECT_EQ(SharedBatchDirectory(L""), L"\\Orvane Software\\Runner");
}

TEST(InstallationHeadings, Texts) {
    EXPECT_EQ(kInstallationHeading, L"\nOrvane Software installation:\n");
    EXPECT_EQ(FormatCurrentDirectoryHeading(L"C:\\tools"), L"* Current directory (C:\\tools):\n");
    EXPECT_EQ(FormatStandardDirectoryHeading(L"C:\\Program Files\\Orvane Software V9"),
              L"* Standard installation directory (C:\\Program Files\\Orvane Software V9):\n");
    EXPECT_EQ(kRegistryDataHeading, L"* Registry installation data:\n");
    EXPECT_EQ(kRegistryDirectoryHeading, L"* Registry installation directory:\n");
    EXPECT_EQ(FormatSharedParametersHeading(L"C:\\ProgramData\\Orvane Software"),
              L"* Shared parameters directory (C:\\ProgramData\\Orvane Software):\n");
    EXPECT_EQ(FormatSharedBatchHeading(L"C:\\ProgramData\\Orvane Software\\Runner"),
              L"* Shared Batch directory (C:\\ProgramData\\Orvane Software\\Runner):\n");
}

TEST(InstallationHeadings, RegistryKey) { EXPECT_STREQ(kSuiteRegistryKey, L"Software\\Orvane Software"); }

namespace {
constexpr wchar_t kStandard[] = L"C:\\Program Files\\Orvane Software V9";
constexpr wchar_t kProgram[] = L"C:\\tools";
}  // namespace

TEST(RegistryDirectory, AnEmptyLocationIsNotListed) {
    EXPECT_FALSE(ShouldListRegistryDirectory(L"", kStandard, kProgram));
    EXPECT_FALSE(ShouldListRegistryDirectory(L"", L"", L""));
}

TEST(RegistryDirectory, TheStandardDirectoryIsNotListedTwice) {
    EXPECT_FALSE(ShouldListRegistryDirectory(kStandard, kStandard, kProgram));
}

TEST(RegistryDirectory, TheProgramDirectoryIsNotListedTwice) {
    EXPECT_FALSE(ShouldListRegistryDirectory(kProgram, kStandard, kProgram));
}

TEST(RegistryDirectory, ADifferenceOfCaseListsItAgain) {
    EXPECT_TRUE(ShouldListRegistryDirectory(L"c:\\program files\\orvane software v9", kStandard, kProgram));
    EXPECT_TRUE(ShouldListRegistryDirectory(L"C:\\TOOLS", kStandard, kProgram));
}

TEST(RegistryDirectory, ATrailingSeparatorListsItAgain) {
    EXPECT_TRUE(ShouldListRegistryDirectory(L"C:\\Program Files\\Orvane Software V9\\", kStandard, kProgram));
    EXPECT_TRUE(ShouldListRegistryDirectory(L"C:\\tools\\", kStandard, kProgram));
}

TEST(RegistryDirectory, AnotherDirectoryIsListed) {
    EXPECT_TRUE(ShouldListRegistryDirectory(L"D:\\Suite", kStandard, kProgram));
}
