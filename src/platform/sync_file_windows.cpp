#include "platform/sync_file.h"

#include "platform/windows_text.h"

#include <windows.h>

namespace orvelle {

bool syncFile(const std::string& path) {
    const HANDLE file = CreateFileW(widePath(path).c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const bool isSynced = FlushFileBuffers(file) != 0;
    CloseHandle(file);
    return isSynced;
}

}  // namespace orvelle
