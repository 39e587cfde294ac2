#include "diagwin/SaveLocation.h"

#include <gtest/gtest.h>

TEST(SaveLocation, NothingRememberedProposesTheRootOfC) {
    EXPECT_EQ(ProposedReportPath(L""), L"C:\\report.txt");
}

TEST(SaveLocation, RememberedFolderIsProposedWithTheUsualName) {
    EXPECT_EQ(ProposedReportPath(L"D:\\Work"), L"D:\\Work\\report.txt");
}

TEST(SaveLocation, FolderIsEverythingBeforeTheLastBackslash) {
    EXPECT_EQ(FolderToRemember(L"D:\\Work\\a.txt"), L"D:\\Work");
    EXPECT_EQ(FolderToRemember(L"C:\\report.txt"), L"C:");
    EXPECT_EQ(FolderToRemember(L"\\\\server\\share\\r"), L"\\\\server\\share");
}

TEST(SaveLocation, PathWithoutBackslashIsNotRemembered) {
    EXPECT_EQ(FolderToRemember(L"report.txt"), std::nullopt);
    EXPECT_EQ(FolderToRemember(L"C:/Work/report.txt"), std::nullopt);
}
