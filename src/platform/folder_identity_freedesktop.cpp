#include "platform/folder_identity.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvelle {

namespace {

std::optional<FolderIdentity> identityOf(const std::string& path, int rights) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        access(path.c_str(), rights) != 0)
        return {};
    return FolderIdentity(status.st_dev, status.st_ino);
}

}  // namespace

std::optional<FolderIdentity> folderIdentity(const std::string& path) {
    return identityOf(path, R_OK | X_OK);
}

std::optional<FolderIdentity> writableFolderIdentity(const std::string& path) {
    return identityOf(path, R_OK | W_OK | X_OK);
}

}  // namespace orvelle
