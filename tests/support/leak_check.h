#pragma once

#include <set>
#include <string>

namespace orvelle::test {

/// Compares the threads and sockets of this process with those it had when this object was built:
/// at the start of main(), after the application object. The last check of a test program.
///
/// What belongs to system libraries does not count; see process_probe.h.
class LeakCheck {
public:
    LeakCheck();

    /// Waits, handling events, until all is gone or `timeoutMs` passed. Prints what is left;
    /// returns how much that is, as an exit code. SRT alone takes 5 s to let go of a closed port.
    int leftovers(int timeoutMs = 20000) const;

private:
    std::set<int> m_threads;          ///< ids
    std::set<std::string> m_sockets;  ///< as the system names them
};

}  // namespace orvelle::test
