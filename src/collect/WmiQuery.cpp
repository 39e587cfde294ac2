#include "collect/WmiQuery.h"

#include <windows.h>
#include <wbemidl.h>

#include <exception>
#include <functional>
#include <thread>
#include <utility>

#include "w32/ComError.h"
#include "w32/Scoped.h"

namespace {
constexpr wchar_t kReportNamespace[] = L"ROOT\\CIMV2";

// The messages carry the result code as their one "0x%x" argument.
unsigned CodeOf(HRESULT hr) { return static_cast<unsigned>(hr); }

// A COM string made for one call. Running out of memory here is the one
// failure that the caller hears about as an exception, not as empty text.
BSTR Checked(const w32::ScopedBstr& text) {
    if (!text.Get()) throw w32::ComError(E_OUTOFMEMORY);
    return text.Get();
}

bool InitializeProcessSecurity() {
    const HRESULT hr = ::CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                              RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    // Security is per process: after the first query (or anyone else's
    // initialisation) COM answers RPC_E_TOO_LATE, and the settings stand.
    if (SUCCEEDED(hr) || hr == RPC_E_TOO_LATE) return true;
    WriteLog("Failed to initialize security. Error code = 0x%x", CodeOf(hr));
    return false;
}

bool Connect(IWbemLocator* locator, const std::wstring& wmiNamespace, w32::ComPtr<IWbemServices>& services) {
    // The namespace string lives for the call only.
    const w32::ScopedBstr name(wmiNamespace.c_str());
    const HRESULT hr =
        locator->ConnectServer(Checked(name), nullptr, nullptr, nullptr, 0, nullptr, nullptr, services.Put());
    if (FAILED(hr)) {
        WriteLog("Could not connect. Error code = 0x%x", CodeOf(hr));
        return false;
    }
    return true;
}

bool SetProxySecurity(IWbemServices* services) {
    const HRESULT hr = ::CoSetProxyBlanket(services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                          RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    if (FAILED(hr)) {
        WriteLog("Could not set proxy blanket. Error code = 0x%x", CodeOf(hr));
        return false;
    }
    return true;
}

bool RunQuery(IWbemServices* services, const std::wstring& className, w32::ComPtr<IEnumWbemClassObject>& rows) {
    const w32::ScopedBstr language(L"WQL");
    const w32::ScopedBstr query((L"SELECT * FROM " + className).c_str());
    const HRESULT hr = services->ExecQuery(Checked(language), Checked(query),
                                           WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, rows.Put());
    if (FAILED(hr)) {
        // The same words for every class: the log has always read so.
        WriteLog("Query for operating system name failed. Error code = 0x%x", CodeOf(hr));
        return false;
    }
    return true;
}

// A value counts only when it is a string; null, missing and numeric
// properties give the empty text.
std::wstring TextOf(const VARIANT& value) {
    if (value.vt != VT_BSTR || value.bstrVal == nullptr) return {};
    return value.bstrVal;
}

// Every row overwrites the result, so the last instance enumerated wins.
std::wstring ReadLastRow(IEnumWbemClassObject* rows, const std::wstring& propertyName) {
    std::wstring result;
    while (rows) {
        w32::ComPtr<IWbemClassObject> row;
        ULONG returned = 0;
        rows->Next(WBEM_INFINITE, 1, row.Put(), &returned);
        if (returned == 0) break;
        w32::ScopedVariant value;
        row->Get(propertyName.c_str(), 0, value.Get(), nullptr, nullptr);
        result = TextOf(value.Ref());
    }
    return result;
}
}  // namespace

std::wstring QueryWmiProperty(std::wstring className, std::wstring propertyName) {
    return QueryWmiPropertyIn(kReportNamespace, className, propertyName);
}

std::wstring QueryWmiPropertyIn(const std::wstring& wmiNamespace, const std::wstring& className,
                                const std::wstring& propertyName) {
    // Each query joins the multithreaded apartment for its own duration; the
    // owners below are released before the apartment is left.
    const w32::ComApartment apartment(COINIT_MULTITHREADED);
    if (!apartment.Succeeded()) {
        WriteLog("Failed to initialize COM library. Error code = 0x%x", CodeOf(apartment.Result()));
        return {};
    }
    if (!InitializeProcessSecurity()) return {};

    w32::ComPtr<IWbemLocator> locator;
    const HRESULT hr =
        ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator, locator.PutVoid());
    if (FAILED(hr)) {
        WriteLog("Failed to create IWbemLocator object. Error code = 0x%x", CodeOf(hr));
        return {};
    }
    w32::ComPtr<IWbemServices> services;
    if (!Connect(locator.Get(), wmiNamespace, services) || !SetProxySecurity(services.Get())) return {};
    w32::ComPtr<IEnumWbemClassObject> rows;
    if (!RunQuery(services.Get(), className, rows)) return {};
    return ReadLastRow(rows.Get(), propertyName);
}

namespace {
bool ThreadIsInSingleThreadedApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    if (::CoGetApartmentType(&type, &qualifier) != S_OK) return false;
    return type == APTTYPE_STA || type == APTTYPE_MAINSTA;
}
}  // namespace

std::wstring CallInMultithreadedApartment(const std::function<std::wstring()>& call) {
    if (!ThreadIsInSingleThreadedApartment()) return call();
    std::wstring value;
    std::exception_ptr failure;
    // The thread's entry is a barrier: its exception is carried back to the
    // caller's thread, whose own barriers log it.
    std::thread worker([&] {
        try {
            value = call();
        } catch (...) {
            failure = std::current_exception();
        }
    });
    worker.join();
    if (failure) std::rethrow_exception(failure);
    return value;
}

std::wstring QueryWmiPropertyFromAnyThread(std::wstring className, std::wstring propertyName) {
    return CallInMultithreadedApartment(
        [&] { return QueryWmiProperty(std::move(className), std::move(propertyName)); });
}
