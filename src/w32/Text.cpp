#include "w32/Text.h"

#include "w32/GrowingBuffer.h"

namespace w32 {

std::wstring AnsiToWide(std::string_view text) {
    if (text.empty()) return {};
    const int length = static_cast<int>(text.size());
    const int needed = ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), needed);
    return wide;
}

namespace {
std::string WideToCodePage(std::wstring_view text, UINT codePage) {
    if (text.empty()) return {};
    const int length = static_cast<int>(text.size());
    const int needed = ::WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(needed), '\0');
    ::WideCharToMultiByte(codePage, 0, text.data(), length, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}
}  // namespace

std::string WideToAnsi(std::wstring_view text) { return WideToCodePage(text, CP_ACP); }

std::string WideToUtf8(std::wstring_view text) { return WideToCodePage(text, CP_UTF8); }

std::wstring GetWindowTextString(HWND hwnd) {
    const int length = ::GetWindowTextLengthW(hwnd);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    const int copied = ::GetWindowTextW(hwnd, text.data(), length + 1);
    text.resize(static_cast<std::size_t>(copied > 0 ? copied : 0));
    return text;
}

std::wstring LoadResourceString(HINSTANCE instance, UINT id) {
    const wchar_t* text = nullptr;
    // With a zero buffer size LoadStringW hands out a pointer into the resource.
    const int length = ::LoadStringW(instance, id, reinterpret_cast<LPWSTR>(&text), 0);
    if (length <= 0 || text == nullptr) return {};
    return std::wstring(text, static_cast<std::size_t>(length));
}

std::wstring GetModulePath(HMODULE module) {
    // A path that fills the buffer may have been cut: twice the room, again.
    const auto path = FillGrowingBuffer<std::wstring>(MAX_PATH, kAskWhileGrowing, [module](std::wstring& buffer) {
        const DWORD size = static_cast<DWORD>(buffer.size());
        const DWORD copied = ::GetModuleFileNameW(module, buffer.data(), size);
        if (copied == 0) return BufferAnswer::Failed();
        return copied < size ? BufferAnswer::Filled(copied) : BufferAnswer::TooSmall(buffer.size() * 2);
    });
    return path ? *path : std::wstring();
}

}  // namespace w32
