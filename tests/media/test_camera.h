#pragma once

#include "device/tutk_device.h"
#include "link/server/link_server.h"

#include <QByteArray>

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

namespace orvelle::test {

/// A camera on loopback that sends what a test tells it to, and a device that knows it.
class TestCamera : public LinkServerListener {
public:
    TestCamera() {
        device.setUid(QString::fromLatin1(m_uid));
        device.setPassword(QStringLiteral("test-password"));
    }
    ~TestCamera() override {
        device.uninit();
        stop();
    }

    /// A server, at the port of the last one; false when it cannot be had.
    bool start() {
        LinkServerConfig config;
        config.uid = m_uid.toStdString();
        config.password = "test-password";
        config.bindAddress = "127.0.0.1";
        config.port = m_port;
        m_server = std::make_unique<LinkServer>(config, this);
        const bool isUp = m_server->start() == 0;
        m_port = m_server->port();
        qputenv("ORVELLE_CAMERA_ADDRESSES", m_uid + "=127.0.0.1:" + QByteArray::number(m_port));
        return isUp;
    }
    void stop() {
        if (m_server)
            m_server->stop();
    }

    /// To the client that connected last; false when the link refuses the frame.
    bool send(uint16_t codecId, bool isKey, uint32_t timestampMs, std::vector<uint8_t> bytes,
              int channel = 0) {
        const LinkFrameInfo info{codecId, static_cast<uint8_t>(isKey), timestampMs};
        const auto frame = std::make_shared<std::vector<uint8_t>>(std::move(bytes));
        const bool isVideo = codecId < 0x86 || codecId > 0x8F;
        return m_server && (isVideo ? m_server->sendVideo(m_client, channel, info, frame)
                                    : m_server->sendAudio(m_client, channel, info, frame)) == 0;
    }

    /// The types of all commands that came, in order.
    std::vector<uint32_t> commands() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_commands;
    }

    void answer(uint32_t type, const QByteArray& payload) {
        m_server->sendControl(m_client, type, payload.constData(),
                              static_cast<size_t>(payload.size()));
    }
    bool isChannelOpen(int channel) const { return m_server->isChannelOpen(m_client, channel); }

    /// Told of each command, on the server's thread; before start().
    std::function<void(uint32_t type, const QByteArray& payload)> onCommand;

    KvTUTKDevice device;

private:
    void clientConnected(int clientId) override { m_client = clientId; }
    void clientDisconnected(int, bool) override {}
    void controlReceived(int, uint32_t type, const uint8_t* data, size_t size) override {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_commands.push_back(type);
        }
        if (onCommand)
            onCommand(type, {reinterpret_cast<const char*>(data), static_cast<int>(size)});
    }

    static inline int s_count = 0;
    const QByteArray m_uid = "MEDIATEST" + QByteArray::number(++s_count);
    std::atomic<int> m_client{-1};
    mutable std::mutex m_mutex;  ///< guards m_commands
    std::vector<uint32_t> m_commands;
    std::unique_ptr<LinkServer> m_server;
    uint16_t m_port = 0;
};

}  // namespace orvelle::test
