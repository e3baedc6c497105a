#include "platform/run_file.h"

#include "platform/windows_text.h"

#include <windows.h>

namespace orvelle {

bool runFile(const std::string& path) {
    const std::wstring file = widePath(path);
    const DWORD attributes = GetFileAttributesW(file.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY))
        return false;
    // The shell, unlike CreateProcess, asks the user for the rights that an installer needs.
    return shellOpen(file);
}

}  // namespace orvelle
