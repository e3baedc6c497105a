#include "test_camera.h"

#include <algorithm>

namespace orvelle::test {

namespace {

using Bytes = std::vector<uint8_t>;

QByteArray freshUid() {
    static int count = 0;
    return "MEDIATEST" + QByteArray::number(++count);
}

}  // namespace

TestCamera::TestCamera() : m_uid(freshUid()) {
    m_device.setUid(QString::fromLatin1(m_uid));
    m_device.setPassword(QStringLiteral("test-password"));
}

TestCamera::~TestCamera() {
    m_device.uninit();
    stop();
}

bool TestCamera::start() {
    LinkServerConfig config;
    config.uid = m_uid.toStdString();
    config.password = "test-password";
    config.bindAddress = "127.0.0.1";
    config.port = m_port;
    m_server = std::make_unique<LinkServer>(config, this);
    if (m_server->start() < 0)
        return false;
    m_port = m_server->port();
    qputenv("ORVELLE_CAMERA_ADDRESSES", m_uid + "=127.0.0.1:" + QByteArray::number(m_port));
    return true;
}

void TestCamera::stop() {
    if (m_server)
        m_server->stop();
    m_server.reset();
}

std::vector<uint32_t> TestCamera::takeCommands() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::move(m_commands);
}

bool TestCamera::hasCommand(uint32_t type) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::count(m_commands.begin(), m_commands.end(), type) > 0;
}

bool TestCamera::sendVideo(uint16_t codecId, bool isKey, uint32_t timestampMs, Bytes bytes) {
    const LinkFrameInfo info{codecId, static_cast<uint8_t>(isKey), timestampMs};
    return m_server &&
           m_server->sendVideo(m_client, 0, info, std::make_shared<Bytes>(std::move(bytes))) == 0;
}

bool TestCamera::sendAudio(uint16_t codecId, uint32_t timestampMs, Bytes bytes) {
    const LinkFrameInfo info{codecId, 0, timestampMs};
    return m_server &&
           m_server->sendAudio(m_client, 0, info, std::make_shared<Bytes>(std::move(bytes))) == 0;
}

void TestCamera::clientConnected(int clientId) {
    m_client = clientId;
}

void TestCamera::controlReceived(int, uint32_t type, const uint8_t*, size_t) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_commands.push_back(type);
}

}  // namespace orvelle::test
