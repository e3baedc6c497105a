#include "platform/windows_text.h"

#include <windows.h>

#include <shellapi.h>

namespace orvelle {

std::wstring wideText(const std::string& utf8) {
    const int bytes = static_cast<int>(utf8.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), bytes, nullptr, 0);
    if (length <= 0)
        return std::wstring();
    std::wstring wide(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), bytes, wide.data(), length);
    return wide;
}

std::wstring widePath(const std::string& utf8) {
    // Folders are refused earlier than files: room for a name of the old kind is kept.
    constexpr size_t kShort = MAX_PATH - 12;
    const std::wstring path = wideText(utf8);
    const DWORD room = path.empty() ? 0 : GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (room == 0)
        return std::wstring();
    std::wstring full(room, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), room, full.data(), nullptr));
    if (full.size() < kShort || full.rfind(LR"(\\?\)", 0) == 0)
        return full;
    const bool isShare = full.rfind(LR"(\\)", 0) == 0;
    return isShare ? LR"(\\?\UNC\)" + full.substr(2) : LR"(\\?\)" + full;
}

bool shellOpen(const std::wstring& path) {
    const HINSTANCE result =
        ShellExecuteW(nullptr, L"open", path.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(result) > 32;
}

}  // namespace orvelle
