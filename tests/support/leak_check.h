#pragma once

#include <set>
#include <string>

namespace orvelle::test {

/// Compares the threads and sockets of this process with those it had when this object was built:
/// at the start of main(), after the application object. The last check of a test program.
///
/// Threads of system libraries that live as long as the process (X11, Mesa, D-Bus, glib, sound)
/// do not count, nor do sockets of the Unix family, which are theirs as well.
class LeakCheck {
public:
    LeakCheck();

    /// Waits, handling events, until all is gone or `timeoutMs` passed. Prints what is left;
    /// returns how much that is, as an exit code. SRT alone takes 5 s to let go of a closed port.
    int leftovers(int timeoutMs = 20000) const;

private:
    std::set<int> m_threads;          ///< ids
    std::set<std::string> m_sockets;  ///< as /proc names them
};

}  // namespace orvelle::test
