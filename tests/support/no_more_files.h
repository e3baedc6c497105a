#pragma once

#include <memory>

namespace orvelle::test {

/// The system gives this process no further file or socket while it lives.
class NoMoreFiles {
public:
    NoMoreFiles();
    ~NoMoreFiles();
    NoMoreFiles(const NoMoreFiles&) = delete;
    NoMoreFiles& operator=(const NoMoreFiles&) = delete;

    /// False where the system offers nothing of the kind; a test skips then.
    static bool isPossible();

private:
    struct Limit;

    std::unique_ptr<Limit> m_limit;
};

}  // namespace orvelle::test
