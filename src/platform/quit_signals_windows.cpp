#include "platform/quit_signals.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <windows.h>

#include <atomic>
#include <utility>

namespace orvelle {

namespace {

// Of the QuitSignals that lives; 0 without one.
std::atomic<DWORD> s_thread{0};

// Runs on a thread that the system makes for it.
BOOL WINAPI handleConsole(DWORD order) {
    const DWORD thread = s_thread.load();
    if (thread == 0)
        return FALSE;
    PostThreadMessageW(thread, WM_CLOSE, 0, 0);
    // These end the process as soon as they are answered; the main thread comes first.
    if (order == CTRL_CLOSE_EVENT || order == CTRL_LOGOFF_EVENT || order == CTRL_SHUTDOWN_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

}  // namespace

// A program that starts has nothing yet that an order to quit could break.
HeldQuitSignals::HeldQuitSignals() = default;

HeldQuitSignals::~HeldQuitSignals() = default;

// Every order arrives as a message to the thread, which is also how one program asks another that
// has no window.
struct QuitSignals::Pipe : QAbstractNativeEventFilter {
    explicit Pipe(std::function<void()> callback) : quit(std::move(callback)) {
        QCoreApplication::instance()->installNativeEventFilter(this);
        // Before it looks for its first message a thread can be sent none.
        MSG first;
        PeekMessageW(&first, nullptr, WM_USER, WM_USER, PM_NOREMOVE);
        s_thread.store(GetCurrentThreadId());
        SetConsoleCtrlHandler(&handleConsole, TRUE);
    }
    ~Pipe() override {
        SetConsoleCtrlHandler(&handleConsole, FALSE);
        s_thread.store(0);
    }

    bool nativeEventFilter(const QByteArray&, void* message, long*) override {
        const auto* order = static_cast<const MSG*>(message);
        const bool isOrder = order && !order->hwnd && order->message == WM_CLOSE;
        if (isOrder)
            quit();
        return isOrder;
    }

    const std::function<void()> quit;
};

QuitSignals::QuitSignals(std::function<void()> quit)
    : m_pipe(std::make_unique<Pipe>(std::move(quit))) {}

QuitSignals::~QuitSignals() = default;

}  // namespace orvelle
