#include "platform/folder_identity.h"

#include "platform/windows_text.h"

#include <windows.h>

namespace orvelle {

namespace {

std::optional<FolderIdentity> identityOf(const std::string& path, DWORD rights) {
    const HANDLE folder = CreateFileW(widePath(path).c_str(), rights,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (folder == INVALID_HANDLE_VALUE)
        return {};
    BY_HANDLE_FILE_INFORMATION information = {};
    const bool isRead = GetFileInformationByHandle(folder, &information) != 0;
    CloseHandle(folder);
    if (!isRead || !(information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
        return {};
    const uint64_t high = information.nFileIndexHigh;
    return FolderIdentity(information.dwVolumeSerialNumber, high << 32 | information.nFileIndexLow);
}

}  // namespace

std::optional<FolderIdentity> folderIdentity(const std::string& path) {
    return identityOf(path, FILE_LIST_DIRECTORY);
}

std::optional<FolderIdentity> writableFolderIdentity(const std::string& path) {
    // Opened for adding files, so that a folder without that right is none.
    return identityOf(path, FILE_LIST_DIRECTORY | FILE_ADD_FILE);
}

}  // namespace orvelle
