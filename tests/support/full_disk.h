#pragma once

#include <cstdint>
#include <memory>

namespace orvelle::test {

/// A disk that is full beyond `bytes` of each file that this process writes, while it lives.
class FullDisk {
public:
    explicit FullDisk(uint64_t bytes);
    ~FullDisk();
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

    /// False where the system offers nothing of the kind; a test skips then.
    static bool isPossible();

private:
    struct Limit;

    std::unique_ptr<Limit> m_limit;
};

}  // namespace orvelle::test
