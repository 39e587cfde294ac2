// The manifest inside the built program: what it asks of Windows shapes the
// rights it starts with, its drawing, the paths it can reach and the Windows
// version it is told.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {

std::string ProgramManifest() {
    const std::wstring self = w32::GetModulePath(nullptr);
    const std::wstring program = self.substr(0, self.find_last_of(L"\\/")) + L"\\OrvaneDiagnostics.exe";
    const w32::ScopedModule image(
        ::LoadLibraryExW(program.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    if (!image) return {};
    HRSRC found = ::FindResourceW(image.Get(), MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24));  // RT_MANIFEST
    if (!found) return {};
    const HGLOBAL loaded = ::LoadResource(image.Get(), found);
    const auto* bytes = static_cast<const char*>(::LockResource(loaded));
    return bytes ? std::string(bytes, ::SizeofResource(image.Get(), found)) : std::string();
}

bool Holds(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

}  // namespace

TEST(ProgramManifest, StartsWithTheRightsOfItsUser) {
    const std::string manifest = ProgramManifest();
    ASSERT_FALSE(manifest.empty()) << "OrvaneDiagnostics.exe next to the test has no manifest";
    EXPECT_TRUE(Holds(manifest, R"(<requestedExecutionLevel level="asInvoker" uiAccess="false"/>)"));
}

TEST(ProgramManifest, DrawsForTheScreenAndUsesVisualStyles) {
    const std::string manifest = ProgramManifest();
    EXPECT_TRUE(Holds(manifest,
                      R"(<dpiAware xmlns="http://schemas.microsoft.com/SMI/2005/WindowsSettings">true</dpiAware>)"));
    EXPECT_TRUE(Holds(manifest, R"(name="Microsoft.Windows.Common-Controls" version="6.0.0.0")"));
}

TEST(ProgramManifest, ReachesPathsLongerThanTheOldLimit) {
    EXPECT_TRUE(Holds(ProgramManifest(),
                      R"(<longPathAware xmlns="http://schemas.microsoft.com/SMI/2016/WindowsSettings">true</longPathAware>)"));
}

TEST(ProgramManifest, DeclaresNoSupportedSystems) {
    // Without the list, Windows newer than 8 reports 6.2 to the program,
    // which the report's Windows section shows beside the real version.
    const std::string manifest = ProgramManifest();
    ASSERT_FALSE(manifest.empty());
    EXPECT_FALSE(Holds(manifest, "supportedOS"));
    EXPECT_FALSE(Holds(manifest, "compatibility"));
}
