// A library planted beside the program or in the current directory, under
// the name of a library the program uses, is never loaded: the loader is
// told to prefer such a file (as Windows does for any library that is not a
// known DLL), and a marker-writing library (planting/PlantedLibrary.cpp) lies
// in wait under every name. A careless control program built without the
// protection (planting/PlantControl.cpp) first shows that the plant works.
#include <gtest/gtest.h>

#include <algorithm>
#include <cwctype>
#include <filesystem>

#include "e2e/Driver.h"
#include "support/Wine.h"
#include "w32/Scoped.h"

#include <tlhelp32.h>  // after <windows.h>

using namespace e2e;

namespace {

constexpr int kReportView = 1003;
constexpr int kSaveButton = 1012;
constexpr int kReportButton = 1013;
constexpr WPARAM kAboutCommand = 16;
constexpr wchar_t kDesktopKey[] = L"Control Panel\\Desktop";

// What the program once imported statically and now delay-loads: libraries
// that are not Windows' known DLLs (comdlg32 is one, but not under Wine).
const std::vector<std::wstring> kStaticNames = {L"version.dll", L"iphlpapi.dll", L"msimg32.dll", L"comctl32.dll",
                                                L"comdlg32.dll"};
// Loaded at run time: the Rich Edit control, GDI+ on a scaled screen, and the
// WMI client libraries as Wine's COM loads them.
const std::vector<std::wstring> kRunTimeNames = {L"msftedit.dll", L"gdiplus.dll",  L"wbemprox.dll", L"wbemsvc.dll",
                                                 L"fastprox.dll", L"wmiutils.dll", L"wbemcomn.dll"};

std::vector<std::wstring> AllNames() {
    std::vector<std::wstring> names = kStaticNames;
    names.insert(names.end(), kRunTimeNames.begin(), kRunTimeNames.end());
    return names;
}

std::wstring BinFolder() { return std::filesystem::path(ProgramPath()).parent_path().wstring(); }
std::wstring BuiltFile(const std::wstring& name) { return BinFolder() + L"\\" + name; }

// Wine's loader is told to take a native file found on its search path
// before its own built-in library ("native,builtin"), as Windows does for any
// library that is not a known DLL, for every name and for each program the
// tests start. A child started from a Windows process does not take
// WINEDLLOVERRIDES from the environment block it is given, so the per-program
// registry setting is used; the tests own these keys.
const std::vector<std::wstring> kStartedPrograms = {L"OrvaneDiagnostics.exe", L"reportcheck.exe", L"plant_control.exe"};

std::wstring OverridesKey(const std::wstring& program) {
    return L"Software\\Wine\\AppDefaults\\" + program + L"\\DllOverrides";
}

void PreferNativeLibraries(const std::vector<std::wstring>& names) {
    const std::wstring value = L"native,builtin";
    for (const auto& program : kStartedPrograms)
        for (const auto& name : names)
            ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, OverridesKey(program).c_str(),
                                        name.substr(0, name.size() - 4).c_str(), REG_SZ, value.c_str(),
                                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))),
                      ERROR_SUCCESS);
}

void ForgetPreferences() {
    for (const auto& program : kStartedPrograms)
        ::RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\Wine\\AppDefaults\\" + program).c_str());
}

// The full paths of the modules a process has loaded.
std::vector<std::wstring> LoadedModulePaths(DWORD pid) {
    std::vector<std::wstring> paths;
    w32::ScopedHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, pid));
    if (!snapshot) return paths;
    MODULEENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL ok = ::Module32FirstW(snapshot.Get(), &entry); ok; ok = ::Module32NextW(snapshot.Get(), &entry))
        paths.push_back(entry.szExePath);
    return paths;
}

std::wstring Lower(std::wstring text) {
    for (auto& c : text) c = static_cast<wchar_t>(towlower(c));
    return text;
}

std::string Narrow(const std::wstring& text) { return std::filesystem::path(text).string(); }

// The file exists and nobody holds it open any more: the program is done
// writing it (it creates the file anew, so it cannot be an older one).
bool IsWrittenAndClosed(const std::wstring& path) {
    w32::ScopedHandle file(
        ::CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(file);
}

// Little-endian UTF-16 bytes as text: what the plant writes into its marker
// (its own path), a report file.
std::wstring Utf16Text(const std::string& bytes) {
    std::wstring text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                            (static_cast<unsigned char>(bytes[i + 1]) << 8)));
    return text;
}

class Planting : public testing::Test {
protected:
    void SetUp() override {
        SKIP_UNLESS_WINE("the loader is told to prefer planted libraries through Wine's per-program settings");
        DeleteSettings();
        root_ = TempFolder(L"orvane-planting");
        for (const auto* sub : {L"program", L"current", L"markers", L"reports"})
            ASSERT_TRUE(std::filesystem::create_directories(root_ + L"\\" + sub));
        SetDpi(120);
        PreferNativeLibraries(AllNames());
    }
    void TearDown() override {
        if (root_.empty()) return;  // skipped: nothing was made
        ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels");
        ForgetPreferences();
        DeleteSettings();
        std::error_code ignored;
        std::filesystem::remove_all(std::filesystem::path(root_), ignored);
    }

    static void SetDpi(DWORD dpi) {
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels", REG_DWORD, &dpi, sizeof(dpi)),
                  ERROR_SUCCESS);
    }

    std::wstring Folder(const wchar_t* sub) const { return root_ + L"\\" + sub; }

    // Copies a built file into the program's folder; returns the copy's path.
    std::wstring CopyIntoProgramFolder(const std::wstring& name) const {
        const std::wstring copy = Folder(L"program") + L"\\" + name;
        EXPECT_TRUE(::CopyFileW(BuiltFile(name).c_str(), copy.c_str(), FALSE)) << "copy " << testing::PrintToString(name);
        return copy;
    }

    // The plant under each name, in `folder`.
    void Plant(const std::wstring& folder, const std::vector<std::wstring>& names) const {
        for (const auto& name : names)
            ASSERT_TRUE(::CopyFileW(BuiltFile(L"planted_library.dll").c_str(), (folder + L"\\" + name).c_str(), FALSE));
    }
    void PlantEverywhere() const {
        Plant(Folder(L"program"), AllNames());
        Plant(Folder(L"current"), AllNames());
    }

    LaunchOptions Options(const std::wstring& program, const std::wstring& arguments = {}) const {
        LaunchOptions options;
        options.program = program;
        options.arguments = arguments;
        options.currentDirectory = Folder(L"current");
        options.environment = {{L"ORVANE_PLANT_MARKERS", Folder(L"markers")}};
        return options;
    }

    // Starts a program that ends by itself and expects status 0.
    static void RunToTheEnd(LaunchOptions options) {
        Program program(std::move(options));
        ASSERT_TRUE(program.Started()) << "could not be started: error " << program.StartError();
        DWORD status = 1234;
        ASSERT_TRUE(program.WaitForExit(status));
        EXPECT_EQ(status, 0u);
    }

    void ClearMarkers() const {
        for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(Folder(L"markers"))))
            std::filesystem::remove(entry.path());
    }

    static std::vector<std::wstring> MarkersOf(const std::vector<std::wstring>& names) {
        std::vector<std::wstring> markers;
        for (const auto& name : names) markers.push_back(name + L".loaded");
        std::sort(markers.begin(), markers.end());
        return markers;
    }

    // The markers written so far, by file name ("version.dll.loaded").
    std::vector<std::wstring> Markers() const {
        std::vector<std::wstring> found;
        for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(Folder(L"markers"))))
            found.push_back(Lower(entry.path().filename().wstring()));  // named as the loader spelled it
        std::sort(found.begin(), found.end());
        return found;
    }

    // What reportcheck.exe (a copy in the planted program folder) says of a file.
    std::string CheckReport(const std::wstring& path) const {
        LaunchOptions options = Options(Folder(L"program") + L"\\reportcheck.exe", L"\"" + path + L"\"");
        options.captureOutput = true;
        Program checker(options);
        DWORD status = 1234;
        EXPECT_TRUE(checker.WaitForExit(status));
        EXPECT_EQ(status, 0u);
        return checker.CapturedOutput();
    }

    // The file is a whole report: every section, the version read from the
    // program's own resource (version.dll), a value from WMI, and reportcheck
    // (itself run among the plants) finds it intact.
    void ExpectCompleteAndIntact(const std::wstring& path) const {
        const std::string bytes = ReadBytes(path);
        ASSERT_GT(bytes.size(), 32u);
        ASSERT_EQ(bytes.substr(0, 2), "\xFF\xFE");
        const std::wstring text = Utf16Text(bytes.substr(2));
        for (const wchar_t* piece : {L"\r\nProgram:\r\nOrvaneDiagnostics 9.3.1.1042\r\n", L"\r\nHost:\r\n",
                                     L"\r\nWindows:\r\n", L"\r\nHardware:\r\n", L"\r\nNetwork:\r\n",
                                     L"Adapters enumeration:", L"\r\nOrvane Software installation:\r\n",
                                     L"\treal version: "})
            EXPECT_NE(text.find(piece), std::wstring::npos) << Narrow(piece);
        EXPECT_EQ(text.find(L"\treal version: \r\n"), std::wstring::npos) << "WMI answered";

        const std::wstring body = text.substr(0, text.size() - 15);
        EXPECT_EQ(text.substr(text.size() - 15), L"\n--- \n" + ChecksumDigits(body) + L"\n");
        std::string verdict = CheckReport(path);
        while (!verdict.empty() && (verdict.back() == '\n' || verdict.back() == '\r')) verdict.pop_back();
        EXPECT_EQ(verdict, Narrow(path) + ": intact (checksum " + Narrow(ChecksumDigits(body)) + ")");
    }

    // An independent reading of the report's checksum.
    static std::wstring ChecksumDigits(const std::wstring& body) {
        std::uint32_t value = 0x01020304;
        for (std::size_t i = 0; i < body.size(); ++i)
            value ^= (static_cast<std::uint32_t>(body[i]) & 0xFF) << (8 * (i % 4));
        wchar_t digits[9];
        swprintf(digits, 9, L"%08x", value);
        return digits;
    }

    std::wstring root_;
};

// Each module of these names that a process loaded, with where it came from.
std::vector<std::wstring> PlantedNamesLoadedFromOutsideTheSystem(DWORD pid) {
    std::vector<std::wstring> found;
    for (const auto& path : LoadedModulePaths(pid)) {
        const std::wstring lower = Lower(path);
        const std::wstring name = std::filesystem::path(lower).filename().wstring();
        const auto names = AllNames();
        if (std::find(names.begin(), names.end(), name) == names.end()) continue;
        if (lower.rfind(L"c:\\windows\\", 0) != 0) found.push_back(path);
    }
    return found;
}

}  // namespace

// The control: the same plant is taken by a program that does not guard its
// library search, for each static import and each library loaded at run time.
TEST_F(Planting, ControlProgramLoadsThePlantUnderEveryName) {
    for (const auto& name : kStaticNames) {
        SCOPED_TRACE(Narrow(name));
        // One plant at a time: the first plant refuses to initialise and so
        // ends the start-up before the next would be initialised.
        const std::wstring folder = Folder(L"program") + L"\\" + name.substr(0, name.size() - 4);
        ASSERT_TRUE(std::filesystem::create_directories(folder));
        ASSERT_TRUE(::CopyFileW(BuiltFile(L"plant_control.exe").c_str(), (folder + L"\\plant_control.exe").c_str(), FALSE));
        Plant(folder, {name});
        Program control(Options(folder + L"\\plant_control.exe"));
        DWORD status = 0;
        ASSERT_TRUE(control.WaitForExit(status));
        EXPECT_NE(status, 0u) << "the plant refused to initialise, so the start-up failed";
        const std::wstring marker = Folder(L"markers") + L"\\" + name + L".loaded";
        EXPECT_EQ(Lower(Utf16Text(ReadBytes(marker))), Lower(folder + L"\\" + name)) << "the plant beside it was loaded";
    }

    // Run-time loads by bare name, the plants beside the program: each is taken.
    const std::wstring control = CopyIntoProgramFolder(L"plant_control.exe");
    std::wstring arguments;
    for (const auto& name : kRunTimeNames) arguments += L" " + name;
    ClearMarkers();
    Plant(Folder(L"program"), kRunTimeNames);
    RunToTheEnd(Options(control, arguments));
    EXPECT_EQ(Markers(), MarkersOf(kRunTimeNames));

    // The plants in the current directory only: the system directory is
    // searched before it, so only the names that are not there are taken,
    // the WMI client libraries (Wine keeps its own under system32\wbem).
    // A folder of its own for this run: the plants the last run loaded may
    // still be held for a moment after it ended.
    const std::wstring alone = Folder(L"program") + L"\\alone";
    ASSERT_TRUE(std::filesystem::create_directories(alone));
    const std::wstring controlAlone = alone + L"\\plant_control.exe";
    ASSERT_TRUE(::CopyFileW(BuiltFile(L"plant_control.exe").c_str(), controlAlone.c_str(), FALSE));
    ClearMarkers();
    Plant(Folder(L"current"), kRunTimeNames);
    RunToTheEnd(Options(controlAlone, arguments));
    EXPECT_EQ(Markers(), MarkersOf({L"wbemprox.dll", L"wbemsvc.dll", L"fastprox.dll", L"wmiutils.dll", L"wbemcomn.dll"}));
}

TEST_F(Planting, HeadlessReportLoadsNoPlantAndIsIntact) {
    const std::wstring program = CopyIntoProgramFolder(L"OrvaneDiagnostics.exe");
    CopyIntoProgramFolder(L"reportcheck.exe");
    PlantEverywhere();
    const std::wstring report = Folder(L"reports") + L"\\report.txt";
    {
        Program diagnostics(Options(program, L"\"" + report + L"\""));
        DWORD status = 1234;
        ASSERT_TRUE(diagnostics.WaitForExit(status, 120s));
        EXPECT_EQ(status, 0u);
    }
    ExpectCompleteAndIntact(report);
    EXPECT_EQ(Markers(), std::vector<std::wstring>{});
}

// The windows as a user meets them, on a scaled screen so GDI+ is started:
// the main window, the report window, Save As and the About box.
TEST_F(Planting, WindowsSaveAndAboutLoadNoPlant) {
    const std::wstring program = CopyIntoProgramFolder(L"OrvaneDiagnostics.exe");
    CopyIntoProgramFolder(L"reportcheck.exe");
    PlantEverywhere();
    const std::wstring saved = Folder(L"reports") + L"\\saved.txt";

    Program diagnostics(Options(program));
    HWND main = diagnostics.WaitForMainWindow();
    ASSERT_NE(main, nullptr);
    EXPECT_TRUE(IsModuleLoaded(diagnostics.Pid(), L"gdiplus.dll")) << "GDI+ is started at 120 DPI";

    PostButtonClick(main, kReportButton);
    HWND window = diagnostics.WaitForWindow([](HWND hwnd) { return ::GetDlgItem(hwnd, kReportView) != nullptr; },
                                            kReportTimeout);
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(WaitUntil(
        [&] { return WindowText(::GetDlgItem(window, kReportView)).find(L"installation:") != std::wstring::npos; },
        kReportTimeout));
    EXPECT_TRUE(IsModuleLoaded(diagnostics.Pid(), L"msftedit.dll"));
    EXPECT_TRUE(IsModuleLoaded(diagnostics.Pid(), L"wbemprox.dll")) << "the report asked WMI";

    PostButtonClick(window, kSaveButton);
    ASSERT_NE(CompleteSaveAs(diagnostics, saved), nullptr);
    ASSERT_TRUE(WaitUntil([&] { return IsWrittenAndClosed(saved); }));

    PostSysCommand(main, kAboutCommand);
    HWND about = diagnostics.WaitForWindow([](HWND hwnd) { return WindowText(hwnd) == L"About Orvane Diagnostics"; });
    ASSERT_NE(about, nullptr);
    PostButtonClick(about, IDOK);
    EXPECT_TRUE(diagnostics.WaitForClosed(about));

    EXPECT_EQ(PlantedNamesLoadedFromOutsideTheSystem(diagnostics.Pid()), std::vector<std::wstring>{});
    EXPECT_EQ(Markers(), std::vector<std::wstring>{});
    ExpectCompleteAndIntact(saved);
}
