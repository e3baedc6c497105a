#include "platform/private_file.h"

#include "platform/windows_text.h"

#include <windows.h>

namespace orvelle {

bool makePrivateFolder(const std::string& path) {
    const std::wstring folder = wideText(path);
    if (CreateDirectoryW(folder.c_str(), nullptr))
        return true;
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool makePrivateFile(const std::string& path) {
    const HANDLE file = CreateFileW(wideText(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_EXISTS;
    CloseHandle(file);
    return true;
}

bool takeFromOthers(const std::string& /*path*/) {
    return true;
}

FilePrivacy privacyOf(int /*descriptor*/) {
    return FilePrivacy::kPrivate;
}

}  // namespace orvelle
