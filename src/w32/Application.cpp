#include "w32/Application.h"

#include "w32/Dialog.h"
#include "w32/ExceptionBarrier.h"
#include "w32/Text.h"

namespace w32 {
namespace {
Application* g_application = nullptr;

std::wstring BaseNameWithoutExtension(const std::wstring& path) {
    const std::size_t slash = path.find_last_of(L"\\/");
    std::wstring name = slash == std::wstring::npos ? path : path.substr(slash + 1);
    const std::size_t dot = name.rfind(L'.');
    if (dot != std::wstring::npos && dot > 0) name.resize(dot);
    return name;
}
}  // namespace

// The program has one; a test that makes a second for a while gets the
// first one back when the second goes.
Application::Application() : previous_(g_application) { g_application = this; }

Application::~Application() {
    if (g_application == this) g_application = previous_;
}

Application* CurrentApp() { return g_application; }

void Application::Initialise(HINSTANCE instance, const wchar_t* commandLine) {
    instance_ = instance;
    name_ = BaseNameWithoutExtension(GetModulePath(nullptr));
    commandLine_ = commandLine ? commandLine : L"";
}

int Application::Run(HINSTANCE instance, const wchar_t* commandLine) noexcept {
    // The program's outermost frames: nothing unwinds into the runtime's entry
    // point, and ExitInstance runs even when the program's life was cut short.
    const bool ran = RunWithBarrier("InitInstance", [&] {
        Initialise(instance, commandLine);
        InitInstance();
    });
    int exitInstanceCode = 0;
    const bool exited = RunWithBarrier("ExitInstance", [&] { exitInstanceCode = ExitInstance(); });
    if (!ran || !exited) return kExitUnexpectedException;
    return exitCode_ != 0 ? exitCode_ : exitInstanceCode;
}

HWND Application::MainWindow() const { return mainDialog_ ? mainDialog_->Hwnd() : nullptr; }

bool Application::InitInstance() { return true; }

int Application::ExitInstance() { return 0; }

void Application::SetRegistryKey(std::wstring_view key) { profile_ = ProfileStore(std::wstring(key), name_); }

std::wstring Application::GetProfileString(std::wstring_view section, std::wstring_view entry,
                                           std::wstring_view fallback) const {
    return profile_.GetString(section, entry, fallback);
}

bool Application::WriteProfileString(std::wstring_view section, std::wstring_view entry,
                                     std::wstring_view value) const {
    return profile_.WriteString(section, entry, value);
}

}  // namespace w32
