// Makes an empty file under the name that stands in the last line of its own file.

#include <windows.h>

#include <algorithm>
#include <string>

int main() {
    constexpr DWORD kLongestLine = 4096;
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH - 1);
    const HANDLE file = CreateFileW(self, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    std::string end(kLongestLine, '\0');
    DWORD size = 0;
    SetFilePointer(file, -static_cast<LONG>(kLongestLine), nullptr, FILE_END);
    if (!ReadFile(file, end.data(), kLongestLine, &size, nullptr))
        return 1;
    CloseHandle(file);
    const std::string line = end.substr(end.rfind('\n', size) + 1);
    std::wstring proof(line.size(), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, line.data(), -1, proof.data(), static_cast<int>(proof.size()));
    const HANDLE made = CreateFileW(proof.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    CloseHandle(made);
    return made == INVALID_HANDLE_VALUE ? 1 : 0;
}
