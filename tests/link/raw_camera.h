#pragma once

#include <QtGlobal>

#include "link/server/client_table.h"
#include "link/server/listener_gate.h"

namespace orvelle::test {

/// A listener that lets callers in like a camera and then does only what a test tells it to:
/// nothing, or send bytes that no camera should. One thread.
class RawCamera {
public:
    RawCamera(const char* uid, const char* password);

    uint16_t port() const { return m_port; }
    /// Waits until `count` more callers were accepted; false after 5 s.
    bool acceptSockets(int count);
    /// Waits for each caller's HELLO and welcomes it; false after 5 s.
    bool welcomeAll();
    void send(StreamPurpose on, const QByteArray& bytes);

private:
    struct Caller {
        StreamPurpose purpose;
        SrtSocket socket;
    };

    SrtLibrary m_library;
    ClientTable m_noClients;
    ListenerGate m_gate;
    uint16_t m_port = 0;
    SrtSocket m_listener;
    std::vector<Caller> m_callers;
};

}  // namespace orvelle::test
