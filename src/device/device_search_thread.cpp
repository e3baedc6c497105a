#include "device/device_search_thread.h"

#include "device/device_manager.h"

TUTKDeviceSearchThread::TUTKDeviceSearchThread(int timeoutMs)
    : KvThread(QStringLiteral("device-search")), m_timeoutMs(timeoutMs) {}

void TUTKDeviceSearchThread::run() {
    if (KvDeviceManager* manager = KvDeviceManager::instance())
        manager->lanSearch(m_result, m_timeoutMs, [this] { return isStopped(); });
}
