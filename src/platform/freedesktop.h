#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QLoggingCategory>
#include <QString>

#include <memory>

namespace orvelle {

Q_DECLARE_LOGGING_CATEGORY(lcPlatform)

/// The buses of the desktop, or an unconnected connection where there is none. Never starts a
/// daemon of its own.
QDBusConnection sessionBus();
QDBusConnection systemBus();

/// Calls `finished` with a valid reply, from the event loop of the thread that asks; never blocks.
template <class Reply, class Finished>
void callLater(const QDBusConnection& bus, const QDBusMessage& call, Finished finished) {
    constexpr int kReplyTimeoutMs = 5000;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, kReplyTimeoutMs));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [finished](QDBusPendingCallWatcher* done) {
                         const Reply reply = *done;
                         if (reply.isValid())
                             finished(reply);
                         else
                             qCDebug(lcPlatform, "desktop: %s",
                                     qUtf8Printable(reply.error().message()));
                         done->deleteLater();
                     });
}

/// A lock of the login service: `what` ("idle", "sleep") is kept from happening (`mode` "block") or
/// has to wait ("delay"). It comes when the service answers, and goes with the last owner of what
/// is returned, on any thread.
std::shared_ptr<void> loginLock(const QString& what, const QString& mode, const QString& why);

}  // namespace orvelle
