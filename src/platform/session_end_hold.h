#pragma once

#include <memory>
#include <string>

namespace orvelle {

/// While it lives, a session that ends waits for this program to close what it has open, as long
/// as the system and the user allow. What makes the program quit is told by native_message.h; this
/// only keeps it alive meanwhile. On desktops that end programs by a signal nothing is needed.
///
/// The installer knows a running program by it: it sends WM_APP to the window class
/// "OrvelleSessionEnd", which passes an order to quit on to the thread that built this, and waits
/// until there is no such window any more.
class SessionEndHold {
public:
    /// `reason` (UTF-8) is what the system shows the user when that takes long.
    explicit SessionEndHold(const std::string& reason);
    ~SessionEndHold();
    SessionEndHold(const SessionEndHold&) = delete;
    SessionEndHold& operator=(const SessionEndHold&) = delete;

private:
    struct Window;

    std::unique_ptr<Window> m_window;
};

}  // namespace orvelle
