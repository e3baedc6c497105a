#include "support/no_more_files.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vector>

namespace orvelle::test {

namespace {

/// Below which all are taken for good: others may be closed meanwhile, and would be given out
/// again.
constexpr int kTaken = 8;

}  // namespace

struct NoMoreFiles::Limit {
    rlimit former;
    std::vector<int> fillers;
};

NoMoreFiles::NoMoreFiles() : m_limit(std::make_unique<Limit>()) {
    int file = -1;
    do {
        file = open("/dev/null", O_RDONLY | O_CLOEXEC);
        m_limit->fillers.push_back(file);
    } while (file >= 0 && file < kTaken);
    getrlimit(RLIMIT_NOFILE, &m_limit->former);
    const rlimit limit = {kTaken, m_limit->former.rlim_max};
    setrlimit(RLIMIT_NOFILE, &limit);
}

NoMoreFiles::~NoMoreFiles() {
    setrlimit(RLIMIT_NOFILE, &m_limit->former);
    for (const int file : m_limit->fillers)
        close(file);
}

bool NoMoreFiles::isPossible() {
    return true;
}

}  // namespace orvelle::test
