#include "system/camera_set.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>

#include "device/device_manager.h"
#include "device/tutk_device.h"
#include "link/client/link_client.h"

namespace orvelle::test {

namespace {

constexpr int kConnectTimeoutMs = 30000;

QStringList uidsOf(const QString& uid, int count) {
    if (count == 1)
        return {uid};
    QStringList uids;
    for (int i = 1; i <= count; ++i)
        uids << uid + QStringLiteral("%1").arg(i, 2, 10, QLatin1Char('0'));
    return uids;
}

QStringList withAddress(const QString& uid, int count, QStringList arguments) {
    arguments << QStringLiteral("--uid") << uid;
    if (count > 1)
        arguments << QStringLiteral("--cameras") << QString::number(count);
    return arguments;
}

}  // namespace

CameraSet::CameraSet(const QString& uid, int count, QStringList arguments)
    : m_uids(uidsOf(uid, count)), m_process(withAddress(uid, count, std::move(arguments))) {}

CameraSet::~CameraSet() {
    KvDeviceManager::release();
    LinkClient::instance().shutDown();
    m_process.terminate();
}

bool CameraSet::connectAll() {
    if (!m_process.start())
        return false;
    KvDeviceManager* manager = KvDeviceManager::create();
    for (const QString& uid : m_uids) {
        auto device = std::make_unique<KvTUTKDevice>();
        device->setUid(uid);
        device->setPassword(QLatin1String(CameraProcess::kPassword));
        m_devices.push_back(device.get());
        manager->addDevice(std::move(device));
    }
    manager->start(QString());
    return waitUntil(kConnectTimeoutMs, [this] {
        return std::all_of(m_devices.begin(), m_devices.end(),
                           [](const KvDevice* device) { return device->isOnline(); });
    });
}

void runFor(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

}  // namespace orvelle::test
