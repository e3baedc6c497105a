#include "device/device_remove_thread.h"

#include <QDir>

#include "core/file_utils.h"
#include "core/log.h"
#include "device/device_group.h"
#include "device/device_manager.h"

using orvelle::kLogInfo;
using orvelle::log;

KvTUTKDeviceRemoveThread::KvTUTKDeviceRemoveThread(KvDeviceGroup* entry)
    : KvThread(QStringLiteral("device-remove")), m_listed(entry) {
    log("start remove thread\n", kLogInfo);
}

KvTUTKDeviceRemoveThread::~KvTUTKDeviceRemoveThread() {
    stop();
    waitForEnd();
    _doFinish();
}

void KvTUTKDeviceRemoveThread::stop() {
    KvThread::stop();
    const std::lock_guard<std::mutex> lock(m_handOverMutex);
    m_handOverSignal.notify_all();
}

void KvTUTKDeviceRemoveThread::run() {
    log("run remove thread\n", kLogInfo);
    if (KvDeviceManager* manager = KvDeviceManager::instance()) {
        m_pause.emplace(*manager);
        QMetaObject::invokeMethod(this, "_doHandOver", Qt::QueuedConnection);
        if (waitForHandOver()) {
            if (!m_entry->removeFile())
                m_areFilesGone = false;
            if (m_device) {
                if (!m_device->removeFile())
                    m_areFilesGone = false;
                // The last picture that was seen.
                if (!QDir(KvFileUtils::cachePath(m_device->uid())).removeRecursively())
                    m_areFilesGone = false;
                m_device->requestStop();
                m_device->uninit();
            }
        }
    }
    log("run remove thread ended\n", kLogInfo);
    QMetaObject::invokeMethod(this, "_doFinish", Qt::QueuedConnection);
}

bool KvTUTKDeviceRemoveThread::waitForHandOver() {
    std::unique_lock<std::mutex> lock(m_handOverMutex);
    m_handOverSignal.wait(lock, [this] { return m_isHandedOver || isStopped(); });
    return m_entry != nullptr;
}

void KvTUTKDeviceRemoveThread::_doHandOver() {
    KvDeviceManager* manager = KvDeviceManager::instance();
    KvDeviceGroup* const listed = std::exchange(m_listed, nullptr);
    const std::lock_guard<std::mutex> lock(m_handOverMutex);
    m_isHandedOver = true;
    if (manager && listed && !isStopped()) {
        KvDevice* const device =
            listed->type() == KvDeviceGroup::kSingleCamera ? listed->firstDevice() : nullptr;
        m_entry = manager->removeGroup(listed);
        m_device = device ? manager->removeDevice(device) : nullptr;
    }
    m_handOverSignal.notify_all();
}

void KvTUTKDeviceRemoveThread::_doFinish() {
    if (m_isFinished)
        return;
    m_isFinished = true;
    waitForEnd();
    m_entry.reset();
    m_device.reset();
    m_pause.reset();
    if (KvDeviceManager* manager = KvDeviceManager::instance())
        emit manager->listChanged();
    emit endedSignal();
}
