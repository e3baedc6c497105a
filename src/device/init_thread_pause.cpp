#include "device/init_thread_pause.h"

#include "device/device_manager.h"

namespace orvelle {

InitThreadPause::InitThreadPause(KvDeviceManager& manager) : m_manager(manager) {
    {
        const std::lock_guard<std::mutex> lock(m_manager.m_threadMutex);
        ++m_manager.m_pauses;
    }
    m_manager.stopInitThread();
}

InitThreadPause::~InitThreadPause() {
    {
        const std::lock_guard<std::mutex> lock(m_manager.m_threadMutex);
        --m_manager.m_pauses;
    }
    m_manager.startInitThread();
}

}  // namespace orvelle
