// The library's About box: the program's name, version and copyright, in the
// library's interface language (see OVSetLanguage).
#pragma once

#include <windows.h>

#include "w32/Dialog.h"

class CWelcomeDlg : public w32::Dialog {
public:
    explicit CWelcomeDlg(HWND parent = nullptr);
    using w32::Dialog::DoModal;

protected:
    bool OnInitDialog() override;
};

class CAboutDlg : public CWelcomeDlg {
public:
    explicit CAboutDlg(HWND parent = nullptr);
};
