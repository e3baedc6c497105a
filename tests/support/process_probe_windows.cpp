#include "support/process_probe.h"

#include <winsock2.h>

#include <windows.h>

#include <iphlpapi.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <memory>
#include <vector>

namespace orvelle::test {
namespace {

struct CloseHandleOf {
    void operator()(void* handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseHandleOf>;

std::string nameOf(DWORD id) {
    using GetDescription = HRESULT(WINAPI*)(HANDLE, PWSTR*);
    static const auto getDescription = reinterpret_cast<GetDescription>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetThreadDescription")));
    const Handle thread(OpenThread(THREAD_QUERY_LIMITED_INFORMATION, FALSE, id));
    PWSTR description = nullptr;
    if (!getDescription || !thread || FAILED(getDescription(thread.get(), &description)))
        return {};
    const std::wstring wide(description);
    LocalFree(description);
    return std::string(wide.begin(), wide.end());
}

double secondsOf(const FILETIME& time) {
    return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) / 1e7;
}

/// The tables of open ports are alike but for their types.
template <class Table, class Row, class Read>
void addSockets(const char* kind, const Read& read, std::set<std::string>& sockets) {
    DWORD bytes = 0;
    read(nullptr, &bytes);
    std::vector<char> memory(bytes + 4096);
    bytes = static_cast<DWORD>(memory.size());
    if (read(memory.data(), &bytes) != NO_ERROR)
        return;
    const auto* table = reinterpret_cast<const Table*>(memory.data());
    for (const Row* row = table->table; row != table->table + table->dwNumEntries; ++row) {
        if (row->dwOwningPid == GetCurrentProcessId())
            sockets.insert(kind + std::to_string(ntohs(static_cast<u_short>(row->dwLocalPort))));
    }
}

}  // namespace

std::map<int, std::string> ownThreads() {
    std::map<int, std::string> threads;
    const Handle all(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL isOne = Thread32First(all.get(), &entry); isOne;
         isOne = Thread32Next(all.get(), &entry)) {
        if (entry.th32OwnerProcessID != GetCurrentProcessId())
            continue;
        const std::string name = nameOf(entry.th32ThreadID);
        if (!name.empty())
            threads[static_cast<int>(entry.th32ThreadID)] = name;
    }
    return threads;
}

std::set<std::string> openSockets() {
    std::set<std::string> sockets;
    addSockets<MIB_UDPTABLE_OWNER_PID, MIB_UDPROW_OWNER_PID>(
        "UDP port ",
        [](void* table, DWORD* bytes) {
            return GetExtendedUdpTable(table, bytes, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0);
        },
        sockets);
    addSockets<MIB_TCPTABLE_OWNER_PID, MIB_TCPROW_OWNER_PID>(
        "TCP port ",
        [](void* table, DWORD* bytes) {
            return GetExtendedTcpTable(table, bytes, FALSE, AF_INET, TCP_TABLE_OWNER_PID_ALL, 0);
        },
        sockets);
    return sockets;
}

double cpuSecondsOf(int64_t process) {
    const Handle handle(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(process)));
    FILETIME started, ended, inKernel, inUser;
    if (!handle || !GetProcessTimes(handle.get(), &started, &ended, &inKernel, &inUser))
        return 0.0;
    return secondsOf(inKernel) + secondsOf(inUser);
}

double residentMibOf(int64_t process) {
    const Handle handle(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE,
                                    static_cast<DWORD>(process)));
    PROCESS_MEMORY_COUNTERS counters = {};
    if (!handle || !K32GetProcessMemoryInfo(handle.get(), &counters, sizeof counters))
        return 0.0;
    return static_cast<double>(counters.WorkingSetSize) / (1024.0 * 1024.0);
}

}  // namespace orvelle::test
