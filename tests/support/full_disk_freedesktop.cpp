#include "support/full_disk.h"

#include <sys/resource.h>

#include <csignal>

namespace orvelle::test {

struct FullDisk::Limit {
    void (*const handler)(int);
    rlimit former;
};

FullDisk::FullDisk(uint64_t bytes)
    : m_limit(std::make_unique<Limit>(Limit{std::signal(SIGXFSZ, SIG_IGN), {}})) {
    getrlimit(RLIMIT_FSIZE, &m_limit->former);
    const rlimit limit = {bytes, m_limit->former.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
}

FullDisk::~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &m_limit->former);
    std::signal(SIGXFSZ, m_limit->handler);
}

bool FullDisk::isPossible() {
    return true;
}

}  // namespace orvelle::test
