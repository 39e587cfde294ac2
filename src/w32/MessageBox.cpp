#include "w32/MessageBox.h"

#include <string>

#include "w32/Application.h"

namespace w32 {

int ShowMessageBox(std::wstring_view text, UINT type) {
    const Application* app = CurrentApp();
    const std::wstring caption = app ? app->Name() : std::wstring();
    HWND owner = ::GetActiveWindow();
    if (!owner && app) owner = app->MainWindow();
    const std::wstring body(text);
    return ::MessageBoxW(owner, body.c_str(), caption.c_str(), type);
}

}  // namespace w32
