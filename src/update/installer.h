#pragma once

#include <QString>

class KvUpdateInfo;

namespace orvelle {

/// The file name under which the installer is kept: what the update file gives, or the version
/// number and "exe". Empty when a part of it could name anything but one new plain file.
QString installerFileName(const KvUpdateInfo& info);

/// Lets the system run a downloaded file that is a program or a script by what it begins with.
void allowToRun(const QString& path);

}  // namespace orvelle
