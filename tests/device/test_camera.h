#pragma once

#include <atomic>
#include <mutex>

#include "device/tutk_device.h"
#include "link/io_types.h"
#include "link/server/link_server.h"

namespace orvelle::test {

/// A camera on this machine that notes what arrives and answers 0x0680 with type 2.
class TestCamera : public LinkServerListener {
public:
    explicit TestCamera(const QString& uid) {
        m_config.uid = uid.toStdString();
        m_config.password = "right";
        m_config.deviceName = "Test camera";
    }
    ~TestCamera() override { stop(); }

    /// Starts with an empty notebook.
    bool start() {
        m_types.clear();
        m_server = std::make_unique<LinkServer>(m_config, this);
        return m_server->start() == 0;
    }
    void stop() {
        if (m_server)
            m_server->stop();
        m_server.reset();
    }
    void answer(const std::vector<uint8_t>& payload) {
        m_server->sendControl(m_client, IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP, payload.data(),
                              payload.size());
    }
    int clients() const { return m_clients; }
    std::vector<uint32_t> types() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_types;
    }
    bool wereLastEightZeros() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_payload == std::vector<uint8_t>(8, 0);
    }

    void clientConnected(int clientId) override {
        m_client = clientId;
        ++m_clients;
    }
    void controlReceived(int, uint32_t type, const uint8_t* data, size_t size) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_types.push_back(type);
        m_payload.assign(data, data + size);
        if (type == IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ)
            answer({2, 0, 0, 0});
    }
    void clientDisconnected(int, bool) override { --m_clients; }

private:
    LinkServerConfig m_config;
    std::unique_ptr<LinkServer> m_server;
    std::atomic<int> m_clients{0};
    std::atomic<int> m_client{-1};
    mutable std::mutex m_mutex;  ///< guards what follows
    std::vector<uint32_t> m_types;
    std::vector<uint8_t> m_payload;
};

inline std::unique_ptr<KvTUTKDevice> deviceFor(const QString& uid, const char* password = "right") {
    auto device = std::make_unique<KvTUTKDevice>();
    device->setUid(uid);
    device->setPassword(QString::fromUtf8(password));
    return device;
}

}  // namespace orvelle::test
