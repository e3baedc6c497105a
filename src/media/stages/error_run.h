#pragma once

namespace orvelle {

/// Logs decoding errors, a run of the same one once: a broken stream fails at every packet.
class ErrorRun {
public:
    explicit ErrorRun(const char* what) : m_what(what) {}  ///< a literal, for the log line

    /// `result` is what a packet gave: 0 ends the run.
    void note(int result);

private:
    const char* const m_what;
    int m_last = 0;
};

}  // namespace orvelle
