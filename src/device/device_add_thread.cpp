#include "device/device_add_thread.h"

#include "core/language.h"
#include "device/device_group.h"
#include "device/device_manager.h"
#include "device/logging.h"
#include "device/tutk_device.h"

namespace {

constexpr int kNameCharacters = 4;
constexpr int kAbortRepeatMs = 20;

}  // namespace

KvTUTKDeviceTryConnectThread::KvTUTKDeviceTryConnectThread(const QString& code)
    : KvThread(QStringLiteral("device-add")), m_code(code) {}

KvTUTKDeviceTryConnectThread::~KvTUTKDeviceTryConnectThread() {
    do
        stop();
    while (!waitForEnd(kAbortRepeatMs));
    _doFinish();
}

QString KvTUTKDeviceTryConnectThread::nameFor(const QString& code) {
    // The same camera gets the same name however its code was typed.
    QString plain = code.simplified().toUpper();
    plain.remove(QLatin1Char(' ')).remove(QLatin1Char('-'));
    return KvLanguage::getString(QStringLiteral("camera")) + plain.right(kNameCharacters);
}

void KvTUTKDeviceTryConnectThread::run() {
    m_status = attempt();
    QMetaObject::invokeMethod(this, "_doFinish", Qt::QueuedConnection);
}

void KvTUTKDeviceTryConnectThread::stop() {
    KvThread::stop();
    const std::lock_guard<std::mutex> lock(m_deviceMutex);
    if (m_device)
        m_device->cancelInit();
}

KvTUTKDeviceTryConnectThread::Status KvTUTKDeviceTryConnectThread::attempt() {
    {
        const std::lock_guard<std::mutex> lock(m_deviceMutex);
        m_device = std::make_unique<KvTUTKDevice>(m_code);
    }
    KvDeviceManager* manager = KvDeviceManager::instance();
    if (!manager || m_device->uid().isEmpty() || m_device->password().isEmpty())
        return kFailed;
    m_pause.emplace(*manager);
    if (manager->contains(m_device.get(), true))
        return kExists;
    if (manager->devicesSnapshot().size() >= KvDeviceManager::kMaxDevices)
        return kFull;
    return connectDevice();
}

KvTUTKDeviceTryConnectThread::Status KvTUTKDeviceTryConnectThread::connectDevice() {
    if (isStopped())
        return kFailed;
    if (m_device->init() != 0) {
        m_failure = m_device->state();
        return kFailed;
    }
    const QString name = nameFor(m_code);
    m_device->setName(name);
    m_entry = std::make_unique<KvDeviceGroup>(m_device.get());
    m_entry->setName(name);
    return store() ? kAdded : kNotSaved;
}

bool KvTUTKDeviceTryConnectThread::store() {
    if (m_device->save() && m_entry->save())
        return true;
    qCWarning(lcDevice) << "cannot save the camera" << m_device->uid();
    m_entry->removeFile();
    m_device->removeFile();
    m_device->requestStop();
    m_device->uninit();
    return false;
}

void KvTUTKDeviceTryConnectThread::_doFinish() {
    if (m_isFinished)
        return;
    m_isFinished = true;
    waitForEnd();
    KvDeviceManager* manager = KvDeviceManager::instance();
    if (manager && m_status == kAdded) {
        KvDevice* const device = m_device.get();
        // Two attempts on one camera may both succeed; the second finds it listed.
        if (manager->addDevice(std::move(m_device))) {
            // First, since an entry may be left over from an earlier binding.
            manager->resolveMembers();
            manager->addGroup(std::move(m_entry));
            emit manager->listChanged();
        } else {
            qCWarning(lcDevice) << "bound meanwhile:" << device->uid();
        }
    }
    m_pause.reset();
    emit updateDeviceStatusSignal(m_status);
}
