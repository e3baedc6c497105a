#include "platform/held_file.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvelle {

namespace {

int64_t changedNs(const struct stat& status) {
    return status.st_ctim.tv_sec * int64_t{1'000'000'000} + status.st_ctim.tv_nsec;
}

enum class Lease { kTaken, kWritten, kUnsupported };

Lease takeLease(int file) {
    // Sent when somebody wants to write; the one that is sent by default would end the program.
    fcntl(file, F_SETSIG, SIGURG);
    if (fcntl(file, F_SETLEASE, F_RDLCK) == 0)
        return Lease::kTaken;
    return errno == EAGAIN ? Lease::kWritten : Lease::kUnsupported;
}

}  // namespace

HeldFile::HeldFile(const std::string& path)
    : m_path(path),
      // A pipe would wait for its other end.
      m_file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
    if (m_file < 0)
        return;
    const int file = static_cast<int>(m_file);
    struct stat status = {};
    const bool isPlainFile = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    const Lease lease = isPlainFile ? takeLease(file) : Lease::kWritten;
    m_isGuarded = lease == Lease::kTaken;
    m_changedNs = changedNs(status);
    if (lease == Lease::kWritten) {
        close(file);
        m_file = -1;
    }
}

HeldFile::~HeldFile() {
    if (m_file >= 0)
        close(static_cast<int>(m_file));
}

bool HeldFile::isHeld() const {
    return m_file >= 0;
}

int HeldFile::read(char* buffer, int size) {
    return static_cast<int>(::read(static_cast<int>(m_file), buffer, static_cast<size_t>(size)));
}

bool HeldFile::isUnchanged() const {
    const int file = static_cast<int>(m_file);
    struct stat own = {};
    struct stat there = {};
    return fstat(file, &own) == 0 && lstat(m_path.c_str(), &there) == 0 &&
           own.st_dev == there.st_dev && own.st_ino == there.st_ino &&
           changedNs(own) == m_changedNs && (!m_isGuarded || fcntl(file, F_GETLEASE) == F_RDLCK);
}

}  // namespace orvelle
