#include "platform/secret_memory.h"

#include <sys/resource.h>

#ifdef __linux__
#include <sys/prctl.h>
#endif

namespace orvelle {

void keepMemorySecret() {
    rlimit limit{};
    // The hard limit stays, so that a program started from here may raise its own again.
    if (getrlimit(RLIMIT_CORE, &limit) == 0) {
        limit.rlim_cur = 0;
        setrlimit(RLIMIT_CORE, &limit);
    }
#ifdef __linux__
    // A dump that goes to a collector by way of a pipe knows no limit.
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
#endif
}

}  // namespace orvelle
