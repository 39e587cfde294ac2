#include <windows.h>

#include "app/DiagnosticsApp.h"

namespace {
CDiagnosticsApp theApp;
}

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR commandLine, int) {
    return theApp.Run(instance, commandLine);
}
