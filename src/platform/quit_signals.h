#pragma once

#include <functional>
#include <memory>

namespace orvelle {

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
