#pragma once

#include <QByteArray>

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

#include "device/tutk_device.h"
#include "link/io_types.h"
#include "link/server/link_server.h"

namespace orvelle::test {

/// A camera on this machine that notes what arrives, answers 0x0680 with type 2, and otherwise
/// sends what a test tells it to.
class TestCamera : public LinkServerListener {
public:
    static constexpr char kPassword[] = "right";

    explicit TestCamera(const QString& uid, const char* password = kPassword) {
        m_config.uid = uid.toStdString();
        m_config.password = password;
        m_config.deviceName = "Test\n camera\xE2\x80\xAE";
    }
    ~TestCamera() override { stop(); }

    /// Starts with an empty notebook, at the port of the last time; false when it cannot be had.
    bool start() {
        m_commands.clear();
        m_server = std::make_unique<LinkServer>(m_config, this);
        const bool isUp = m_server->start() == 0;
        m_config.port = m_server->port();
        return isUp;
    }
    void stop() {
        if (m_server)
            m_server->stop();
        m_server.reset();
    }

    /// These go to the client that connected last.
    void answer(uint32_t type, const QByteArray& payload) {
        m_server->sendControl(m_client, type, payload.constData(),
                              static_cast<size_t>(payload.size()));
    }
    /// False when the link refuses the frame.
    bool send(uint16_t codecId, bool isKey, uint32_t timestampMs, std::vector<uint8_t> bytes,
              int channel = 0) {
        const LinkFrameInfo info{codecId, static_cast<uint8_t>(isKey), timestampMs};
        const auto frame = std::make_shared<std::vector<uint8_t>>(std::move(bytes));
        const bool isVideo = codecId < 0x86 || codecId > 0x8F;
        return m_server && (isVideo ? m_server->sendVideo(m_client, channel, info, frame)
                                    : m_server->sendAudio(m_client, channel, info, frame)) == 0;
    }
    bool isChannelOpen(int channel) const {
        return m_server && m_server->isChannelOpen(m_client, channel);
    }

    int clients() const { return m_clients; }
    uint16_t port() const { return m_config.port; }
    /// The types of all commands that came, in order.
    std::vector<uint32_t> commands() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_commands;
    }
    bool wereLastEightZeros() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_payload == QByteArray(8, '\0');
    }

    /// Told of each command, on the server's thread; set before start().
    std::function<void(uint32_t type, const QByteArray& payload)> onCommand;

private:
    void clientConnected(int clientId) override {
        m_client = clientId;
        ++m_clients;
    }
    void clientDisconnected(int, bool) override { --m_clients; }
    void controlReceived(int, uint32_t type, const uint8_t* data, size_t size) override {
        const QByteArray payload(reinterpret_cast<const char*>(data), static_cast<int>(size));
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_commands.push_back(type);
            m_payload = payload;
        }
        if (type == IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ)
            answer(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP, QByteArray("\2\0\0\0", 4));
        if (onCommand)
            onCommand(type, payload);
    }

    LinkServerConfig m_config;
    std::unique_ptr<LinkServer> m_server;
    std::atomic<int> m_clients{0};
    std::atomic<int> m_client{-1};
    mutable std::mutex m_mutex;  ///< guards what follows
    std::vector<uint32_t> m_commands;
    QByteArray m_payload;
};

inline std::unique_ptr<KvTUTKDevice> deviceFor(const QString& uid,
                                               const char* password = TestCamera::kPassword) {
    auto device = std::make_unique<KvTUTKDevice>();
    device->setUid(uid);
    device->setPassword(QString::fromUtf8(password));
    return device;
}

}  // namespace orvelle::test
