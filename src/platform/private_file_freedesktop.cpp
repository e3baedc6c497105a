#include "platform/private_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orvelle {

namespace {

constexpr mode_t kOthersRights = S_IRWXG | S_IRWXO;
constexpr mode_t kOthersReading = S_IRGRP | S_IROTH;

bool closeToOthers(int descriptor) {
    struct stat entry {};
    if (fstat(descriptor, &entry) != 0)
        return false;
    if (!S_ISREG(entry.st_mode) && !S_ISDIR(entry.st_mode))
        return true;
    const mode_t rights = entry.st_mode & static_cast<mode_t>(07777);
    return (rights & kOthersRights) == 0 || fchmod(descriptor, rights & ~kOthersRights) == 0;
}

}  // namespace

bool makePrivateFolder(const std::string& path) {
    struct stat entry {};
    return mkdir(path.c_str(), S_IRWXU) == 0 ||
           (errno == EEXIST && stat(path.c_str(), &entry) == 0 && S_ISDIR(entry.st_mode));
}

bool makePrivateFile(const std::string& path) {
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return errno == EEXIST;
    close(descriptor);
    return true;
}

bool takeFromOthers(const std::string& path) {
    // Without blocking: nobody may ever write to a pipe that lies there.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return errno == ELOOP || errno == ENOENT;
    const bool isClosed = closeToOthers(descriptor);
    close(descriptor);
    return isClosed;
}

FilePrivacy privacyOf(int descriptor) {
    struct stat entry {};
    if (fstat(descriptor, &entry) != 0)
        return FilePrivacy::kOpenToOthers;
    if (entry.st_uid != geteuid() && entry.st_uid != 0)
        return FilePrivacy::kOfOthers;
    // Terminals are open to the group that sends messages to them.
    const mode_t refused = S_ISREG(entry.st_mode) ? kOthersRights : kOthersReading;
    return (entry.st_mode & refused) == 0 ? FilePrivacy::kPrivate : FilePrivacy::kOpenToOthers;
}

}  // namespace orvelle
