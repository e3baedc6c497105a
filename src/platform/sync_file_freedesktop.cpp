#include "platform/sync_file.h"

#include <fcntl.h>
#include <unistd.h>

namespace orvelle {

bool syncFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    // With the size that is needed to find the data again, but without the times.
    const bool isSynced = fdatasync(file) == 0;
    close(file);
    return isSynced;
}

}  // namespace orvelle
