#include "device/device_add_thread.h"

#include <QDeadlineTimer>

#include "core/language.h"
#include "core/wipe.h"
#include "device/device_group.h"
#include "device/device_lock.h"
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
    orvelle::wipe(m_code);
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
    const std::optional<QString> known = manager->passwordOf(m_device->uid());
    if (known == m_device->password())
        return kExists;
    if (!known && manager->devicesSnapshot().size() >= KvDeviceManager::kMaxDevices)
        return kFull;
    if (!proveCode())
        return kFailed;
    if (!known)
        return bindDevice(*manager);
    // The bound camera has a session of its own.
    m_device->requestStop();
    m_device->uninit();
    return kChanged;
}

bool KvTUTKDeviceTryConnectThread::proveCode() {
    const QDeadlineTimer deadline(m_patience.totalMs);
    while (!isStopped()) {
        if (m_device->init() == 0)
            return true;
        const orvelle::DeviceState failure = m_device->state();
        if (failure != orvelle::DeviceState::kRefusedForNow || deadline.hasExpired()) {
            m_failure = failure;
            return false;
        }
        emit waitingSignal();
        sleepUnlessStopped(m_patience.pauseMs);
    }
    return false;
}

KvTUTKDeviceTryConnectThread::Status KvTUTKDeviceTryConnectThread::bindDevice(
    KvDeviceManager& manager) {
    const QString name = nameFor(m_code);
    m_device->setName(name);
    m_entry = std::make_unique<KvDeviceGroup>(m_device.get());
    m_entry->setName(name);
    return manager.makeRoomFor(m_device->uid()) && store() ? kAdded : kNotSaved;
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
    if (manager && m_status == kAdded)
        addToList(*manager);
    else if (manager && (m_status == kChanged || m_status == kExists))
        changePassword(*manager);
    m_pause.reset();
    emit updateDeviceStatusSignal(m_status);
}

void KvTUTKDeviceTryConnectThread::addToList(KvDeviceManager& manager) {
    const QString uid = m_device->uid();
    // Two attempts on one camera may both succeed, and the second finds it listed; or the program
    // ends, and the next start lists it.
    if (!manager.addDevice(std::move(m_device))) {
        qCWarning(lcDevice) << "bound meanwhile, or too late:" << uid;
        return;
    }
    // First, since an entry may be left over from an earlier binding.
    manager.resolveMembers();
    if (!manager.addGroup(std::move(m_entry)))
        qCWarning(lcDevice) << "its entry is listed already";
    emit manager.listChanged();
}

void KvTUTKDeviceTryConnectThread::changePassword(KvDeviceManager& manager) {
    // The program's way out may clear the devices meanwhile.
    const orvelle::DeviceLock lock(manager);
    auto* device = qobject_cast<KvTUTKDevice*>(manager.findDevice(m_device->uid()));
    // It may have been removed meanwhile.
    if (!device) {
        m_status = kFailed;
        return;
    }
    // Also the same one: it is tried by the round that begins now, though it was refused before.
    device->changePassword(m_device->password());
    if (m_status == kChanged && !device->saveLater())
        m_status = kNotSaved;
}
