// The application object: one per process, reachable from anywhere through
// CurrentApp(). It knows the program's name, instance, command line and
// settings, and runs InitInstance/ExitInstance around the program's life.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "w32/Profile.h"

namespace w32 {

class Dialog;

class Application {
public:
    Application();
    virtual ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // Called from wWinMain. Returns the process exit code:
    // kExitUnexpectedException (w32/ExceptionBarrier.h) when an exception
    // left InitInstance or ExitInstance, which is then logged.
    int Run(HINSTANCE instance, const wchar_t* commandLine) noexcept;
    // Takes the instance, name and command line without running anything
    // (Run does this first; tests call it alone).
    void Initialise(HINSTANCE instance, const wchar_t* commandLine);

    HINSTANCE Instance() const { return instance_; }
    // The executable's base name without extension.
    const std::wstring& Name() const { return name_; }
    // What follows the program's path on the command line.
    const std::wstring& CommandLineText() const { return commandLine_; }

    // The program's main window, once it exists.
    HWND MainWindow() const;
    void SetMainDialog(Dialog* dialog) { mainDialog_ = dialog; }

    // Settings go under HKCU\Software\<key>\<Name()>.
    void SetRegistryKey(std::wstring_view key);
    const ProfileStore& Profile() const { return profile_; }
    std::wstring GetProfileString(std::wstring_view section, std::wstring_view entry,
                                  std::wstring_view fallback = {}) const;
    bool WriteProfileString(std::wstring_view section, std::wstring_view entry, std::wstring_view value) const;

    // The exit code that Run returns; 0 unless the program sets another.
    void SetExitCode(int code) { exitCode_ = code; }

protected:
    // Returning false ends the program (no message loop of its own is run).
    virtual bool InitInstance();
    virtual int ExitInstance();

private:
    Application* previous_;
    HINSTANCE instance_ = nullptr;
    std::wstring name_;
    std::wstring commandLine_;
    Dialog* mainDialog_ = nullptr;
    ProfileStore profile_;
    int exitCode_ = 0;
};

Application* CurrentApp();

}  // namespace w32
