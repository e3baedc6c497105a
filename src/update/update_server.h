#pragma once

#include <QString>

namespace orvelle {

/// Where updates and the pictures of the manual come from, without a slash at its end; empty for
/// nowhere. A setting of the build. Interface thread.
QString updateServer();

/// Another one from now on, for this process.
void setUpdateServer(const QString& address);

}  // namespace orvelle
