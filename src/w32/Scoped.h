// Scoped owners for Win32 resources: each releases what it holds on every
// path, so no function needs a hand-written clean-up ladder.
#pragma once

#include <windows.h>
#include <objbase.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace w32 {

// A movable, non-copyable owner of a value that needs a release call.
template <typename T, typename Traits>
class Scoped {
public:
    Scoped() = default;
    explicit Scoped(T value) : value_(value) {}
    ~Scoped() { Reset(); }
    Scoped(const Scoped&) = delete;
    Scoped& operator=(const Scoped&) = delete;
    Scoped(Scoped&& other) noexcept : value_(other.Release()) {}
    Scoped& operator=(Scoped&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }

    T Get() const { return value_; }
    bool IsValid() const { return Traits::IsValid(value_); }
    explicit operator bool() const { return IsValid(); }

    // For out-parameters: releases the current value first.
    T* Put() {
        Reset();
        return &value_;
    }
    T Release() { return std::exchange(value_, Traits::Invalid()); }
    void Reset(T value = Traits::Invalid()) {
        if (Traits::IsValid(value_)) Traits::Close(value_);
        value_ = value;
    }

private:
    T value_ = Traits::Invalid();
};

struct HandleTraits {
    static HANDLE Invalid() { return nullptr; }
    static bool IsValid(HANDLE h) { return h != nullptr && h != INVALID_HANDLE_VALUE; }
    static void Close(HANDLE h) { ::CloseHandle(h); }
};
using ScopedHandle = Scoped<HANDLE, HandleTraits>;

struct FindTraits {
    static HANDLE Invalid() { return INVALID_HANDLE_VALUE; }
    static bool IsValid(HANDLE h) { return h != INVALID_HANDLE_VALUE && h != nullptr; }
    static void Close(HANDLE h) { ::FindClose(h); }
};
using ScopedFind = Scoped<HANDLE, FindTraits>;

struct RegKeyTraits {
    static HKEY Invalid() { return nullptr; }
    static bool IsValid(HKEY k) { return k != nullptr; }
    static void Close(HKEY k) { ::RegCloseKey(k); }
};
using ScopedRegKey = Scoped<HKEY, RegKeyTraits>;

template <typename G>
struct GdiTraits {
    static G Invalid() { return nullptr; }
    static bool IsValid(G g) { return g != nullptr; }
    static void Close(G g) { ::DeleteObject(g); }
};
template <typename G>
using ScopedGdi = Scoped<G, GdiTraits<G>>;
using ScopedBitmap = ScopedGdi<HBITMAP>;
using ScopedBrush = ScopedGdi<HBRUSH>;
using ScopedPen = ScopedGdi<HPEN>;
using ScopedFont = ScopedGdi<HFONT>;

struct IconTraits {
    static HICON Invalid() { return nullptr; }
    static bool IsValid(HICON h) { return h != nullptr; }
    static void Close(HICON h) { ::DestroyIcon(h); }
};
using ScopedIcon = Scoped<HICON, IconTraits>;

struct LocalTraits {
    static HLOCAL Invalid() { return nullptr; }
    static bool IsValid(HLOCAL h) { return h != nullptr; }
    static void Close(HLOCAL h) { ::LocalFree(h); }
};
using ScopedLocal = Scoped<HLOCAL, LocalTraits>;

struct ModuleTraits {
    static HMODULE Invalid() { return nullptr; }
    static bool IsValid(HMODULE h) { return h != nullptr; }
    static void Close(HMODULE h) { ::FreeLibrary(h); }
};
using ScopedModule = Scoped<HMODULE, ModuleTraits>;

// A C runtime stream.
struct FileTraits {
    static FILE* Invalid() { return nullptr; }
    static bool IsValid(FILE* f) { return f != nullptr; }
    static void Close(FILE* f) { std::fclose(f); }
};
using ScopedCFile = Scoped<FILE*, FileTraits>;

// Memory from the process heap (HeapAlloc/HeapFree).
struct HeapTraits {
    static void* Invalid() { return nullptr; }
    static bool IsValid(void* p) { return p != nullptr; }
    static void Close(void* p) { ::HeapFree(::GetProcessHeap(), 0, p); }
};
using ScopedHeap = Scoped<void*, HeapTraits>;

// A device context borrowed with GetDC and given back with ReleaseDC.
class ScopedWindowDC {
public:
    explicit ScopedWindowDC(HWND hwnd) : hwnd_(hwnd), dc_(::GetDC(hwnd)) {}
    ~ScopedWindowDC() {
        if (dc_) ::ReleaseDC(hwnd_, dc_);
    }
    ScopedWindowDC(const ScopedWindowDC&) = delete;
    ScopedWindowDC& operator=(const ScopedWindowDC&) = delete;
    HDC Get() const { return dc_; }

private:
    HWND hwnd_;
    HDC dc_;
};

// BeginPaint/EndPaint.
class ScopedPaint {
public:
    explicit ScopedPaint(HWND hwnd) : hwnd_(hwnd) { dc_ = ::BeginPaint(hwnd, &ps_); }
    ~ScopedPaint() { ::EndPaint(hwnd_, &ps_); }
    ScopedPaint(const ScopedPaint&) = delete;
    ScopedPaint& operator=(const ScopedPaint&) = delete;
    HDC Get() const { return dc_; }

private:
    HWND hwnd_;
    PAINTSTRUCT ps_{};
    HDC dc_;
};

// Selects an object into a DC and restores the previous one.
class ScopedSelect {
public:
    ScopedSelect(HDC dc, HGDIOBJ obj) : dc_(dc), previous_(::SelectObject(dc, obj)) {}
    ~ScopedSelect() { ::SelectObject(dc_, previous_); }
    ScopedSelect(const ScopedSelect&) = delete;
    ScopedSelect& operator=(const ScopedSelect&) = delete;

private:
    HDC dc_;
    HGDIOBJ previous_;
};

// A memory DC from CreateCompatibleDC.
class ScopedMemoryDC {
public:
    explicit ScopedMemoryDC(HDC reference) : dc_(::CreateCompatibleDC(reference)) {}
    ~ScopedMemoryDC() {
        if (dc_) ::DeleteDC(dc_);
    }
    ScopedMemoryDC(const ScopedMemoryDC&) = delete;
    ScopedMemoryDC& operator=(const ScopedMemoryDC&) = delete;
    HDC Get() const { return dc_; }

private:
    HDC dc_;
};

// A COM interface pointer that is released when it goes out of scope.
template <typename T>
class ComPtr {
public:
    ComPtr() = default;
    ~ComPtr() { Reset(); }
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;
    ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    ComPtr& operator=(ComPtr&& other) noexcept {
        if (this != &other) {
            Reset();
            p_ = std::exchange(other.p_, nullptr);
        }
        return *this;
    }

    T* Get() const { return p_; }
    T* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    T** Put() {
        Reset();
        return &p_;
    }
    void** PutVoid() { return reinterpret_cast<void**>(Put()); }
    void Reset() {
        if (p_) std::exchange(p_, nullptr)->Release();
    }

private:
    T* p_ = nullptr;
};

// Joins a COM apartment for the lifetime of the object. Only a successful
// initialisation (S_OK or S_FALSE) is balanced by CoUninitialize.
class ComApartment {
public:
    explicit ComApartment(DWORD flags) : hr_(::CoInitializeEx(nullptr, flags)) {}
    ~ComApartment() {
        if (SUCCEEDED(hr_)) ::CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    HRESULT Result() const { return hr_; }
    bool Succeeded() const { return SUCCEEDED(hr_); }

private:
    HRESULT hr_;
};

// A BSTR made for one call and freed after it.
class ScopedBstr {
public:
    explicit ScopedBstr(const wchar_t* text) : bstr_(::SysAllocString(text)) {}
    ~ScopedBstr() { ::SysFreeString(bstr_); }
    ScopedBstr(const ScopedBstr&) = delete;
    ScopedBstr& operator=(const ScopedBstr&) = delete;
    BSTR Get() const { return bstr_; }

private:
    BSTR bstr_;
};

// A VARIANT that is cleared when it goes out of scope.
class ScopedVariant {
public:
    ScopedVariant() { ::VariantInit(&v_); }
    ~ScopedVariant() { ::VariantClear(&v_); }
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;
    VARIANT* Get() { return &v_; }
    const VARIANT& Ref() const { return v_; }

private:
    VARIANT v_;
};

}  // namespace w32
