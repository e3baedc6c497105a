#pragma once

#include <QDBusConnection>
#include <QLoggingCategory>

namespace orvelle {

Q_DECLARE_LOGGING_CATEGORY(lcPlatform)

/// The buses of the desktop, or an unconnected connection where there is none. Never starts a
/// daemon of its own.
QDBusConnection sessionBus();
QDBusConnection systemBus();

}  // namespace orvelle
