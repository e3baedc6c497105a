#include "platform/thread_name.h"

#include "platform/windows_text.h"

#include <windows.h>

namespace orvelle {

// There since Windows 10 only.
void nameThisThread(const std::string& name) {
    using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    static const auto setDescription = reinterpret_cast<SetDescription>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (setDescription)
        setDescription(GetCurrentThread(), wideText(name).c_str());
}

}  // namespace orvelle
