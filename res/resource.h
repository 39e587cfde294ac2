// Resource identifiers of Orvane Diagnostics.
#pragma once

// Dialog templates
#define IDD_MAIN_FR 102
#define IDD_MAIN_EN 103
#define IDD_DIAGNOSTICS 105
#define IDD_OV_ABOUT 110

// Icon
#define IDR_MAINFRAME 128

// Strings
#define IDS_ABOUTBOX_FR 101
#define IDS_ABOUTBOX_EN 102

// Controls
#define IDC_REPORT_VIEW 1003
#define IDC_SAVE_REPORT 1012
#define IDC_SYSTEM_REPORT 1013
#define IDC_OV_ABOUT_ICON 1100
#define IDC_OV_ABOUT_NAME 1101
#define IDC_OV_ABOUT_VERSION 1102
#define IDC_OV_ABOUT_COPYRIGHT 1103

// Bitmaps of the System report button: normal, pressed, focused, disabled, hot
#define IDB_SYSTEM_REPORT 2031
#define IDB_SYSTEM_REPORT_PRESSED 2032
#define IDB_SYSTEM_REPORT_FOCUSED 2033
#define IDB_SYSTEM_REPORT_DISABLED 2034
#define IDB_SYSTEM_REPORT_HOT 2035

// System-menu commands, as WM_SYSCOMMAND delivers them
#define IDM_ABOUTBOX 16
#define IDM_SYSTEM_REPORT 17
#define IDM_RUN_AS_ADMIN 23

// Version of the program
#define DIAG_VERSION_BINARY 9, 3, 1, 1042
#define DIAG_VERSION_TEXT "9, 3, 1, 1042"
