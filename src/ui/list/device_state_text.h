#pragma once

#include <QString>

class KvDevice;

namespace orvelle {

/// What the user reads about a camera's connection: online, or why it is not.
QString deviceStateText(const KvDevice& device);

}  // namespace orvelle
