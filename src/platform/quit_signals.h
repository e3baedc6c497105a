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

/// Turns the system's orders to quit (SIGTERM, SIGINT, SIGHUP) into a callback on the thread that
/// built it, from its event loop; signals that come together count as one. One object a process;
/// the former handlers return when it goes. On Windows the end of a session comes by native
/// messages instead (native_message.h) and this one is silent.
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
