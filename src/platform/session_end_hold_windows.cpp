#include "platform/session_end_hold.h"

#include "platform/thread_name.h"
#include "platform/windows_text.h"

#include <windows.h>

#include <future>
#include <thread>
#include <utility>

namespace orvelle {

namespace {

constexpr wchar_t kClass[] = L"OrvelleSessionEnd";

}  // namespace

// A window that nobody sees, on a thread of its own. The system ends the process once all its
// windows have answered that the session ends; this one answers when the program is through,
// whereas those of the interface thread have to answer before that thread can close anything.
struct SessionEndHold::Window {
    explicit Window(std::wstring why) : reason(std::move(why)) {
        std::promise<void> made;
        const std::future<void> isMade = made.get_future();
        thread = std::thread([this, made = std::move(made)]() mutable {
            nameThisThread("session-end");
            make();
            made.set_value();
            handleMessages();
        });
        isMade.wait();
    }
    ~Window() {
        SetEvent(isThrough);
        if (handle)
            PostMessageW(handle, WM_CLOSE, 0, 0);
        thread.join();
        CloseHandle(isThrough);
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void make() {
        WNDCLASSEXW kind = {};
        kind.cbSize = sizeof kind;
        kind.lpfnWndProc = &Window::handleMessage;
        kind.hInstance = GetModuleHandleW(nullptr);
        kind.lpszClassName = kClass;
        RegisterClassExW(&kind);
        handle = CreateWindowExW(0, kClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                 kind.hInstance, nullptr);
        if (handle)
            SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }

    void handleMessages() const {
        MSG message = {};
        while (handle && GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
    }

    static LRESULT CALLBACK handleMessage(HWND handle, UINT number, WPARAM first, LPARAM second) {
        const auto* window =
            reinterpret_cast<const Window*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
        switch (number) {
            case WM_QUERYENDSESSION:
                if (window)
                    ShutdownBlockReasonCreate(handle, window->reason.c_str());
                return TRUE;
            case WM_ENDSESSION:
                if (window && first)
                    WaitForSingleObject(window->isThrough, INFINITE);
                ShutdownBlockReasonDestroy(handle);
                return 0;
            case WM_APP:
                if (window)
                    PostThreadMessageW(window->owner, WM_CLOSE, 0, 0);
                return 0;
            case WM_DESTROY:
                PostQuitMessage(0);
                return 0;
            default:
                return DefWindowProcW(handle, number, first, second);
        }
    }

    const DWORD owner = GetCurrentThreadId();
    const std::wstring reason;
    const HANDLE isThrough = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HWND handle = nullptr;  // written on the thread before the constructor returns
    std::thread thread;
};

SessionEndHold::SessionEndHold(const std::string& reason)
    : m_window(std::make_unique<Window>(wideText(reason))) {}

SessionEndHold::~SessionEndHold() = default;

}  // namespace orvelle
