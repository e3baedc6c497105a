#include "platform/open_folder.h"

#include "platform/windows_text.h"

#include <windows.h>

namespace orvelle {

bool openFolder(const std::string& path) {
    std::wstring folder = widePath(path);
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        return false;
    // Without the separator a program "name.exe" beside the folder "name" would be run instead.
    if (folder.back() != L'\\' && folder.back() != L'/')
        folder += L'\\';
    return shellOpen(folder);
}

}  // namespace orvelle
