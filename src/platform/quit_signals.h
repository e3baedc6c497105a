#pragma once

#include <functional>
#include <memory>

namespace orvelle {

/// Keeps orders to quit waiting while it exists: made first thing in main(), before any thread, and
/// destroyed once a QuitSignals can take them, so that none ends a program that is starting.
class HeldQuitSignals {
public:
    HeldQuitSignals();
    ~HeldQuitSignals();
    HeldQuitSignals(const HeldQuitSignals&) = delete;
    HeldQuitSignals& operator=(const HeldQuitSignals&) = delete;
};

/// Turns the system's orders to quit into a callback on the thread that built it, from its event
/// loop: SIGTERM, SIGINT and SIGHUP, of which those that come together count as one and whose
/// former handlers return when it goes, but a SIGHUP that is ignored when it comes (nohup) stays
/// so; on Windows what the console says (Ctrl+C, closing it), and WM_CLOSE sent to the thread. The
/// end of a session there comes by native messages (native_message.h). One object a process, made
/// after the application object.
class QuitSignals {
public:
    explicit QuitSignals(std::function<void()> quit);
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    struct Pipe;

    std::unique_ptr<Pipe> m_pipe;
};

}  // namespace orvelle
