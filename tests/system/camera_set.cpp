#include "system/camera_set.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>

#include "core/configure.h"
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

}  // namespace

CameraSet::CameraSet(const QString& uid, int count, const QStringList& arguments,
                     Processes processes)
    : m_uids(uidsOf(uid, count)) {
    const int share = processes == Processes::kEach ? 1 : count;
    for (int i = 0; i < count; i += share) {
        QStringList own = arguments;
        own << QStringLiteral("--uid") << (share > 1 ? uid : m_uids[i]);
        if (share > 1)
            own << QStringLiteral("--cameras") << QString::number(share);
        m_processes.push_back(std::make_unique<CameraProcess>(std::move(own)));
    }
}

CameraSet::~CameraSet() {
    KvConfigure::setWriter(nullptr);
    KvDeviceManager::release();
    LinkClient::instance().shutDown();
    for (const auto& process : m_processes)
        process->terminate();
}

double CameraSet::cpuSeconds() const {
    double sum = 0.0;
    for (const auto& process : m_processes)
        sum += process->cpuSeconds();
    return sum;
}

bool CameraSet::connectAll() {
    for (const auto& process : m_processes)
        if (!process->start())
            return false;
    KvDeviceManager* manager = KvDeviceManager::create();
    KvConfigure::setWriter(&manager->fileWriter());
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
