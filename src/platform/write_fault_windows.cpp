#include "platform/write_fault.h"

#include <windows.h>

namespace orvelle {

namespace {

// ERROR_DISK_QUOTA_EXCEEDED, which MinGW's headers lack.
constexpr DWORD kDiskQuotaExceeded = 1295;

}  // namespace

WriteFault lastWriteFault() {
    switch (GetLastError()) {
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return WriteFault::kDiskFull;
        case kDiskQuotaExceeded:
            return WriteFault::kQuota;
        case ERROR_FILE_TOO_LARGE:
            return WriteFault::kFileTooLarge;
        default:
            return WriteFault::kOther;
    }
}

// They do so here in any case.
void letTooLargeWritesFail() {}

}  // namespace orvelle
