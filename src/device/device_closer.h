#pragma once

#include <QList>

class KvDevice;

namespace orvelle {

/// Closes the sessions of all devices at once and returns when the last is closed. Each
/// session's goodbye may take some 200 ms, so they do not wait for each other.
void closeDevices(const QList<KvDevice*>& devices);

}  // namespace orvelle
