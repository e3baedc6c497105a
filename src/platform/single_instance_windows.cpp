#include "platform/single_instance.h"

#include "platform/windows_text.h"

#include <windows.h>

#include <utility>

namespace orvelle {

// The handle is the lock: the system closes it with the process.
struct SingleInstance::Lock {
    explicit Lock(HANDLE mutex) : handle(mutex) {}
    ~Lock() { CloseHandle(handle); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    const HANDLE handle;
};

SingleInstance::SingleInstance(std::string name, std::string folder)
    : m_name(std::move(name)), m_folder(std::move(folder)) {}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::acquire() {
    if (m_lock)
        return true;
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, wideText(m_name).c_str());
    const bool isTaken = GetLastError() == ERROR_ALREADY_EXISTS;
    if (!mutex)
        return true;
    auto lock = std::make_unique<Lock>(mutex);
    if (isTaken)
        return false;
    m_lock = std::move(lock);
    return true;
}

void SingleInstance::release() {
    m_lock.reset();
}

bool SingleInstance::isHeld() const {
    return m_lock != nullptr;
}

}  // namespace orvelle
