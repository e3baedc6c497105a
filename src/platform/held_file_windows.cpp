#include "platform/held_file.h"

#include "platform/windows_text.h"

#include <windows.h>

namespace orvelle {

static HANDLE handleOf(intptr_t file) {
    return reinterpret_cast<HANDLE>(file);
}

static intptr_t openHeld(const std::string& path) {
    // Others may read and run it, nothing else.
    const HANDLE file = CreateFileW(wideText(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    BY_HANDLE_FILE_INFORMATION about = {};
    if (GetFileType(file) == FILE_TYPE_DISK && GetFileInformationByHandle(file, &about) &&
        !(about.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
        return reinterpret_cast<intptr_t>(file);
    CloseHandle(file);
    return -1;
}

HeldFile::HeldFile(const std::string& path) : m_path(path), m_file(openHeld(path)) {}

HeldFile::~HeldFile() {
    if (isHeld())
        CloseHandle(handleOf(m_file));
}

bool HeldFile::isHeld() const {
    return m_file != -1;
}

int HeldFile::read(char* buffer, int size) {
    DWORD count = 0;
    if (!ReadFile(handleOf(m_file), buffer, static_cast<DWORD>(size), &count, nullptr))
        return -1;
    return static_cast<int>(count);
}

bool HeldFile::isUnchanged() const {
    return true;  // the system sees to it while the handle is open
}

}  // namespace orvelle
