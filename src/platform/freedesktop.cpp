#include "platform/freedesktop.h"

#include <QFileInfo>

namespace orvelle {

Q_LOGGING_CATEGORY(lcPlatform, "orvelle.platform")

namespace {

QDBusConnection noBus() {
    return QDBusConnection(QStringLiteral("orvelle-no-bus"));
}

}  // namespace

QDBusConnection sessionBus() {
    // Without an address and without the user's bus socket, the D-Bus library would start a daemon
    // that outlives the program.
    const bool hasSocket =
        QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") && !hasSocket)
        return noBus();
    return QDBusConnection::sessionBus();
}

QDBusConnection systemBus() {
    if (qEnvironmentVariableIsEmpty("DBUS_SYSTEM_BUS_ADDRESS") &&
        !QFileInfo::exists(QStringLiteral("/run/dbus/system_bus_socket")) &&
        !QFileInfo::exists(QStringLiteral("/var/run/dbus/system_bus_socket")))
        return noBus();
    return QDBusConnection::systemBus();
}

}  // namespace orvelle
