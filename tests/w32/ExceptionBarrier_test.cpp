// An exception thrown by a handler must stop at our side of the system's
// frames: logged, the user told, the window still alive.
#include "w32/ExceptionBarrier.h"

#include <windows.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "collect/WmiQuery.h"
#include "resource.h"
#include "w32/Application.h"
#include "w32/ComError.h"
#include "w32/Dialog.h"
#include "w32/Log.h"

namespace {
constexpr WORD kThrowingCommand = 4242;
constexpr UINT kThrowingControlMessage = WM_APP + 7;

// Records what the barriers log and tell, instead of the debugger output and
// a message box that would wait for a click.
class ExceptionBarrierTest : public testing::Test {
protected:
    void SetUp() override {
        SetLogSink([this](const std::string& line) { log_.push_back(line); });
        w32::SetFailureNotice([this](const char* where) { notices_.push_back(where); });
    }
    void TearDown() override {
        w32::SetFailureNotice({});
        SetLogSink({});
    }
    std::vector<std::string> log_;
    std::vector<std::string> notices_;
};

// The seam: a handler that runs out of memory as the WMI query can.
class ThrowingDialog : public w32::Dialog {
public:
    int commandsSeen = 0;

protected:
    bool OnCommand(WORD id, WORD code, HWND control) override {
        if (id != kThrowingCommand) return w32::Dialog::OnCommand(id, code, control);
        ++commandsSeen;
        throw w32::ComError(E_OUTOFMEMORY);
    }
};

class ThrowingControl : public w32::OwnerDrawControl {
public:
    void DrawItem(const DRAWITEMSTRUCT&) override {}

protected:
    bool OnControlMessage(UINT message, WPARAM, LPARAM, LRESULT&) override {
        if (message == kThrowingControlMessage) throw std::runtime_error("control handler failed");
        return false;
    }
};

class ThrowingApp : public w32::Application {
public:
    bool exitInstanceRan = false;

protected:
    bool InitInstance() override { throw std::runtime_error("start-up failed"); }
    int ExitInstance() override {
        exitInstanceRan = true;
        return 0;
    }
};
}  // namespace

TEST_F(ExceptionBarrierTest, DialogHandlerExceptionIsLoggedToldAndLeavesTheMessageUnhandled) {
    ThrowingDialog dialog;
    ASSERT_TRUE(dialog.Create(IDD_DIAGNOSTICS, nullptr));
    const LRESULT result = ::SendMessageW(dialog.Hwnd(), WM_COMMAND, MAKEWPARAM(kThrowingCommand, BN_CLICKED), 0);

    EXPECT_EQ(result, 0);
    EXPECT_EQ(dialog.commandsSeen, 1);
    EXPECT_EQ(log_, (std::vector<std::string>{"Unexpected exception in DialogProc: COM operation failed (0x8007000e)"}));
    EXPECT_EQ(notices_, (std::vector<std::string>{"DialogProc"}));
    // The window lives on and goes on handling messages.
    ASSERT_TRUE(::IsWindow(dialog.Hwnd()));
    ::SendMessageW(dialog.Hwnd(), WM_COMMAND, MAKEWPARAM(kThrowingCommand, BN_CLICKED), 0);
    EXPECT_EQ(dialog.commandsSeen, 2);
    EXPECT_EQ(notices_.size(), 2u);
}

TEST_F(ExceptionBarrierTest, SubclassHandlerExceptionLeavesTheMessageToTheControl) {
    ThrowingDialog dialog;
    ASSERT_TRUE(dialog.Create(IDD_DIAGNOSTICS, nullptr));
    HWND button = ::CreateWindowExW(0, L"BUTTON", L"text", WS_CHILD, 0, 0, 10, 10, dialog.Hwnd(), nullptr,
                                    ::GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(button, nullptr);
    ThrowingControl control;
    ASSERT_TRUE(control.Attach(button));

    ::SendMessageW(button, kThrowingControlMessage, 0, 0);
    EXPECT_EQ(log_, (std::vector<std::string>{"Unexpected exception in SubclassProc: control handler failed"}));
    EXPECT_EQ(notices_, (std::vector<std::string>{"SubclassProc"}));
    // The control's own handling still answers.
    wchar_t text[8] = {};
    EXPECT_EQ(::SendMessageW(button, WM_GETTEXT, 8, reinterpret_cast<LPARAM>(text)), 4);
    EXPECT_STREQ(text, L"text");
}

TEST_F(ExceptionBarrierTest, StartUpExceptionEndsTheRunWithItsStatusAfterExitInstance) {
    w32::Application* const previous = w32::CurrentApp();
    int status = 0;
    bool exitInstanceRan = false;
    {
        ThrowingApp app;
        status = app.Run(::GetModuleHandleW(nullptr), L"");
        exitInstanceRan = app.exitInstanceRan;
    }
    EXPECT_EQ(status, 5);
    EXPECT_EQ(status, w32::kExitUnexpectedException);
    EXPECT_TRUE(exitInstanceRan);
    EXPECT_EQ(log_, (std::vector<std::string>{"Unexpected exception in InitInstance: start-up failed"}));
    // Nobody waits at start-up: no box, the status says it.
    EXPECT_TRUE(notices_.empty());
    EXPECT_EQ(w32::CurrentApp(), previous);
}

// The WMI query's worker thread: an exception thrown there (out of memory
// while making a COM string) reaches the thread that asked, as the same
// exception, where that thread's own barrier takes it; it never unwinds out
// of the worker's entry, which would end the process.
TEST_F(ExceptionBarrierTest, WorkerThreadExceptionReachesTheCallingThread) {
    HRESULT caught = S_OK;
    DWORD callerThread = 0;
    DWORD callThread = 0;
    std::thread caller([&] {
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        callerThread = ::GetCurrentThreadId();
        try {
            CallInMultithreadedApartment([&]() -> std::wstring {
                callThread = ::GetCurrentThreadId();
                throw w32::ComError(E_OUTOFMEMORY);
            });
        } catch (const w32::ComError& error) {
            caught = error.Code();
        }
        ::CoUninitialize();
    });
    caller.join();
    EXPECT_EQ(caught, E_OUTOFMEMORY);
    EXPECT_NE(callThread, 0u);
    EXPECT_NE(callThread, callerThread);  // it did run on a worker
}

TEST_F(ExceptionBarrierTest, OutsideASingleThreadedApartmentTheCallRunsInPlace) {
    const DWORD here = ::GetCurrentThreadId();
    DWORD callThread = 0;
    EXPECT_EQ(CallInMultithreadedApartment([&] {
                  callThread = ::GetCurrentThreadId();
                  return std::wstring(L"value");
              }),
              L"value");
    EXPECT_EQ(callThread, here);
}
