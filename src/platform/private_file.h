#pragma once

#include <string>

namespace orvelle {

/// Files and folders that are their owner's only: their user's where the system has modes. On
/// Windows a user's profile is closed to others as it is, so there these change nothing.
/// Paths are UTF-8.

/// Makes the folder, closed to others from the start; its parent must exist. True as well when a
/// folder is there already, which stays as it is.
bool makePrivateFolder(const std::string& path);

/// Makes an empty file, closed to others from the start. True as well when one is there already,
/// which stays as it is.
bool makePrivateFile(const std::string& path);

/// Takes the rights of all others on a file or folder of this user away. A symbolic link is not
/// followed and anything else is left alone. False when others keep rights on it.
bool takeFromOthers(const std::string& path);

/// Whether an open file is closed to others.
enum class FilePrivacy {
    kPrivate,
    kOpenToOthers,  ///< they may read it, or write to a file proper
    kOfOthers,      ///< it belongs neither to this user nor to the administrator
};

/// Of an open file, by its descriptor.
FilePrivacy privacyOf(int descriptor);

}  // namespace orvelle
