#pragma once

#include "device/tutk_device.h"
#include "link/server/link_server.h"

#include <QByteArray>

#include <atomic>
#include <mutex>
#include <vector>

namespace orvelle::test {

/// A camera on loopback that sends what a test tells it to, and a device that knows it.
class TestCamera : public LinkServerListener {
public:
    TestCamera();
    ~TestCamera() override;

    /// A server at the port of the last one; false when it cannot be had.
    bool start();
    void stop();

    KvTUTKDevice& device() { return m_device; }
    /// The types that came since the last call, in order.
    std::vector<uint32_t> takeCommands();
    bool hasCommand(uint32_t type) const;

    /// To the client that connected last. False when it is not there or the frame too big.
    bool sendVideo(uint16_t codecId, bool isKey, uint32_t timestampMs, std::vector<uint8_t> bytes);
    bool sendAudio(uint16_t codecId, uint32_t timestampMs, std::vector<uint8_t> bytes);

private:
    void clientConnected(int clientId) override;
    void controlReceived(int clientId, uint32_t type, const uint8_t*, size_t) override;
    void clientDisconnected(int, bool) override {}

    const QByteArray m_uid;
    std::atomic<int> m_client{-1};
    mutable std::mutex m_mutex;  ///< guards m_commands
    std::vector<uint32_t> m_commands;
    std::unique_ptr<LinkServer> m_server;
    uint16_t m_port = 0;
    KvTUTKDevice m_device;
};

}  // namespace orvelle::test
