#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace orvelle {

/// Device and file number: another pair at the same path is another folder.
using FolderIdentity = std::pair<uint64_t, uint64_t>;

/// Empty unless `path` (UTF-8) is a folder whose files may be read.
std::optional<FolderIdentity> folderIdentity(const std::string& path);

/// Empty unless `path` (UTF-8) is a folder in which files may be made and removed.
std::optional<FolderIdentity> writableFolderIdentity(const std::string& path);

}  // namespace orvelle
