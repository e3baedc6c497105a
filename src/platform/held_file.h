#pragma once

#include <cstdint>
#include <string>

namespace orvelle {

/// A file that is read and that nobody else may change meanwhile, as far as the system can promise
/// that. On Windows nobody can write, remove or rename it while it is held. On Linux, where file
/// system and owner allow a lease, whoever wants to write waits, for 45 s by default; a file that
/// takes its place, or any change, is noticed by isUnchanged(). One thread at a time.
class HeldFile {
public:
    /// `path` is UTF-8. A link, and anything else that is no plain file, is not opened; nor is
    /// one that somebody is writing.
    explicit HeldFile(const std::string& path);
    ~HeldFile();
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    bool isHeld() const;
    /// The number of bytes read, 0 at the end, -1 when the disk fails.
    int read(char* buffer, int size);
    /// Whether the path still leads to this file and nobody has begun to write to it.
    bool isUnchanged() const;

private:
    const std::string m_path;
    intptr_t m_file;           ///< owned; a descriptor, on Windows a handle; -1: not open
    bool m_isGuarded = false;  ///< Linux: by a lease
    int64_t m_changedNs = 0;   ///< Linux: when it was opened, the time of its last change
};

}  // namespace orvelle
