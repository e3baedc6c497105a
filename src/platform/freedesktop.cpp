#include "platform/freedesktop.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QFileInfo>

namespace orvelle {

Q_LOGGING_CATEGORY(lcPlatform, "orvelle.platform")

namespace {

QDBusConnection noBus() {
    return QDBusConnection(QStringLiteral("orvelle-no-bus"));
}

bool hasSystemBus() {
    return !qEnvironmentVariableIsEmpty("DBUS_SYSTEM_BUS_ADDRESS") ||
           QFileInfo::exists(QStringLiteral("/run/dbus/system_bus_socket")) ||
           QFileInfo::exists(QStringLiteral("/var/run/dbus/system_bus_socket"));
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
    return hasSystemBus() ? QDBusConnection::systemBus() : noBus();
}

std::shared_ptr<void> loginLock(const QString& what, const QString& mode, const QString& why) {
    auto lock = std::make_shared<QDBusUnixFileDescriptor>();
    // Even a connection to nowhere would start the toolkit's thread for them.
    if (!hasSystemBus())
        return lock;
    const QDBusConnection bus = systemBus();
    if (!bus.isConnected())
        return lock;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << what << QCoreApplication::applicationName() << why << mode;
    using Reply = QDBusPendingReply<QDBusUnixFileDescriptor>;
    callLater<Reply>(bus, call, [weak = std::weak_ptr(lock)](const Reply& reply) {
        // The descriptor is the lock: one that nobody waits for any more goes with the reply.
        if (const auto wanted = weak.lock())
            *wanted = reply.value();
    });
    return lock;
}

}  // namespace orvelle
