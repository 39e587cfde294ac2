// Libraries loaded by name come from the system directory only.
#include <gtest/gtest.h>

#include <cwctype>
#include <string>

#include "w32/Scoped.h"
#include "w32/SystemLibrary.h"

namespace {

std::wstring Lower(std::wstring text) {
    for (auto& c : text) c = static_cast<wchar_t>(std::towlower(c));
    return text;
}

std::wstring ModulePath(HMODULE module) {
    wchar_t path[MAX_PATH] = {};
    ::GetModuleFileNameW(module, path, MAX_PATH);
    return path;
}

std::wstring SystemDirectory() {
    wchar_t path[MAX_PATH] = {};
    ::GetSystemDirectoryW(path, MAX_PATH);
    return path;
}

}  // namespace

TEST(SystemLibrary, ComesFromTheSystemDirectory) {
    w32::ScopedModule richEdit(w32::LoadSystemLibrary(L"msftedit.dll"));
    ASSERT_TRUE(richEdit);
    EXPECT_EQ(Lower(ModulePath(richEdit.Get())), Lower(SystemDirectory() + L"\\msftedit.dll"));
}

// A library that lies only beside the test program (a version fixture) is
// never taken by LoadSystemLibrary, though a plain LoadLibrary finds it (asked
// second: a library already loaded is handed out by its name alone).
TEST(SystemLibrary, IsNeverTakenFromBesideTheProgram) {
    EXPECT_EQ(w32::LoadSystemLibrary(L"fixture_version_blanks.dll"), nullptr);
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    w32::ScopedModule beside(::LoadLibraryW(L"fixture_version_blanks.dll"));
    EXPECT_TRUE(beside) << "the fixture lies beside the test program";
}
