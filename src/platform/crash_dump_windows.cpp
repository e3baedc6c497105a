#include "platform/crash_dump.h"

#include "platform/windows_text.h"

#include <windows.h>

#include <dbghelp.h>

#include <array>
#include <csignal>

namespace orvelle {

namespace {

// A handler of crashes can allocate nothing.
std::array<wchar_t, 1024> s_path;

LONG WINAPI writeDump(EXCEPTION_POINTERS* state) {
    const HANDLE file = CreateFileW(s_path.data(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return EXCEPTION_CONTINUE_SEARCH;
    MINIDUMP_EXCEPTION_INFORMATION exception{GetCurrentThreadId(), state, FALSE};
    MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpNormal,
                      state ? &exception : nullptr, nullptr, nullptr);
    CloseHandle(file);
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

void writeCrashDumpTo(const std::string& path) {
    const std::wstring wide = widePath(path);
    if (wide.empty() || wide.size() >= s_path.size())
        return;
    wide.copy(s_path.data(), wide.size());
    SetUnhandledExceptionFilter(&writeDump);
    // What the C++ library gives up on is no exception of the system.
    std::signal(SIGABRT, [](int) { writeDump(nullptr); });
}

}  // namespace orvelle
