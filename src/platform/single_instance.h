#pragma once

#include <memory>
#include <string>
#include <utility>

namespace orvelle {

/// Keeps a second copy of the program from running for the same user or, where a user can have
/// several, on the same folder of data. The system frees the lock of a process that crashed. Not
/// for use from several threads.
class SingleInstance {
public:
    /// `name` (ASCII letters and digits) is what the copies compete for.
    explicit SingleInstance(std::string name) : SingleInstance(std::move(name), {}) {}
    /// `folder` (UTF-8): which data the copies compete for. On Windows a user has only one such
    /// folder.
    SingleInstance(std::string name, std::string folder);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// False when another process (or object) holds the lock. Where the system offers no place
    /// for a lock the program may run all the same: true without a lock.
    bool acquire();
    void release();
    bool isHeld() const;

private:
    struct Lock;

    const std::string m_name;
    const std::string m_folder;
    std::unique_ptr<Lock> m_lock;
};

}  // namespace orvelle
