#include "device/connect_round.h"

#include "core/log.h"
#include "core/thread.h"
#include "device/connect_attempts.h"
#include "device/device_lock.h"
#include "link/environment.h"
#include "link/iotc.h"
#include "link/result_codes.h"

namespace orvelle {

namespace {

constexpr int kSearchMs = 2000;

bool isLost(const KvDevice& device) {
    return device.state() == DeviceState::kLost || device.state() == DeviceState::kClosedByCamera;
}

}  // namespace

int ConnectRound::run(const KvThread& thread) {
    log("KvDeviceManager init thread check device init\n", kLogInfo);
    begin();
    tell(m_beyond, LINK_ER_NO_FREE_CHANNEL);
    const int asked = IOTC_Lan_Ask(
        kSearchMs,
        [this](const LanSearchRecord& record) { answered(QString::fromLatin1(record.uid)); },
        [this, &thread] { return m_silent.isEmpty() || thread.isStopped(); });
    if (!thread.isStopped())
        tell(m_silent, asked == 0 ? LINK_ER_NOT_FOUND : asked);
    return asked;
}

void ConnectRound::begin() {
    const DeviceLock lock(m_manager);
    int place = 0;
    for (const auto& device : m_manager.devices()) {
        const QString uid = device->uid();
        if (++place > KvDeviceManager::kMaxDevices)
            m_beyond.insert(uid);
        // Where its address is known, its own attempt asks there and can say more than silence.
        else if (configuredCameraAddress(uid.toStdString()))
            tryDevice(*device);
        else if (!device->isOnline())
            m_silent.insert(uid);
    }
}

void ConnectRound::answered(const QString& uid) {
    const DeviceLock lock(m_manager);
    KvDevice* const device = m_manager.findDevice(uid);
    m_silent.remove(uid);
    // It answers several times, and what failed is not repeated; but a session may have broken
    // since.
    if (device && !m_beyond.contains(uid) && (!m_tried.contains(uid) || isLost(*device)) &&
        tryDevice(*device))
        m_tried.insert(uid);
}

bool ConnectRound::tryDevice(KvDevice& device) {
    return !device.isOnline() && m_attempts.begin(device);
}

void ConnectRound::tell(const QSet<QString>& uids, int result) {
    for (const QString& uid : uids) {
        const DeviceLock lock(m_manager);
        KvDevice* const device = m_manager.findDevice(uid);
        if (device && !m_attempts.isUnderWay(*device))
            device->noteNotFound(result);
    }
}

}  // namespace orvelle
