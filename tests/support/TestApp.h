// The application object of the unit tests: settings under a key of their
// own, English unless a test switches the language.
#pragma once

#include "app/DiagnosticsApp.h"

inline constexpr wchar_t kTestRegistryKey[] = L"Orvane Software V9 Unit Tests";

CDiagnosticsApp& TestApp();

// Switches the interface language for the lifetime of the object.
class ScopedLanguage {
public:
    explicit ScopedLanguage(bool english);
    ~ScopedLanguage();

private:
    int previous_;
};
