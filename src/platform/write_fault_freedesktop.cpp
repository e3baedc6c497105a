#include "platform/write_fault.h"

#include <cerrno>
#include <csignal>

namespace orvelle {

WriteFault lastWriteFault() {
    switch (errno) {
        case ENOSPC:
            return WriteFault::kDiskFull;
        case EDQUOT:
            return WriteFault::kQuota;
        case EFBIG:
            return WriteFault::kFileTooLarge;
        default:
            return WriteFault::kOther;
    }
}

void letTooLargeWritesFail() {
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace orvelle
