#include "platform/folder_identity.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvelle {

std::optional<FolderIdentity> writableFolderIdentity(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        access(path.c_str(), R_OK | W_OK | X_OK) != 0)
        return {};
    return FolderIdentity(status.st_dev, status.st_ino);
}

}  // namespace orvelle
