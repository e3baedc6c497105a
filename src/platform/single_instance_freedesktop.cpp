#include "platform/single_instance.h"

#include "platform/freedesktop.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace orvelle {
namespace {

// Others must not be able to put a link or a lock of theirs in our place.
bool isPrivateDirectory(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::string lockDirectory() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && runtime[0] == '/' && isPrivateDirectory(runtime))
        return runtime;
    const std::string own = "/tmp/orvelle-" + std::to_string(geteuid());
    mkdir(own.c_str(), 0700);
    return isPrivateDirectory(own) ? own : std::string();
}

}  // namespace

// The open descriptor is the lock: the system drops it with the process. The file stays, since
// removing it would let two processes lock two files of one name.
struct SingleInstance::Lock {
    explicit Lock(int descriptor) : fd(descriptor) {}
    ~Lock() { close(fd); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    const int fd;
};

SingleInstance::SingleInstance(std::string name, std::string folder)
    : m_name(std::move(name)), m_folder(std::move(folder)) {}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::acquire() {
    if (m_lock)
        return true;
    // In the folder itself, so that it is the same one whatever path leads to it.
    const std::string directory = m_folder.empty() ? lockDirectory() : m_folder;
    const std::string path = directory + "/" + m_name + ".lock";
    const int fd = directory.empty()
                       ? -1
                       : open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) {
        qCWarning(lcPlatform, "no place for the single-instance lock: running without");
        return true;
    }
    auto lock = std::make_unique<Lock>(fd);
    if (flock(fd, LOCK_EX | LOCK_NB) == 0) {
        m_lock = std::move(lock);
        return true;
    }
    if (errno == EWOULDBLOCK)
        return false;
    qCWarning(lcPlatform, "cannot lock %s (%s): running without", path.c_str(),
              std::strerror(errno));
    return true;
}

void SingleInstance::release() {
    m_lock.reset();
}

bool SingleInstance::isHeld() const {
    return m_lock != nullptr;
}

}  // namespace orvelle
