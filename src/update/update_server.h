#pragma once

#include <QString>

#include <optional>

#include "update/minisign.h"

namespace orvelle {

/// Where updates and the pictures of the manual come from, without a slash at its end; empty for
/// nowhere. A setting of the build. Interface thread.
QString updateServer();

/// Whose signatures an update must carry; a setting of the build. Without one, nothing passes.
/// Interface thread.
std::optional<MinisignKey> updateKey();

/// Others from now on, for this process. The key is base64.
void setUpdateServer(const QString& address, const QByteArray& key);

}  // namespace orvelle
