#pragma once

#include <QString>

namespace orvelle {

/// Where a user's programs keep what they must remember from one run to the next, one folder a
/// program below it; absolute. It need not exist.
QString stateRoot();

}  // namespace orvelle
