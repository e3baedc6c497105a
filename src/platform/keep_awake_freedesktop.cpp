#include "platform/keep_awake.h"

#include "platform/freedesktop.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>

namespace orvelle {
namespace {

constexpr int kReplyTimeoutMs = 5000;

QDBusMessage screenSaverCall(const QString& method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                          QStringLiteral("/org/freedesktop/ScreenSaver"),
                                          QStringLiteral("org.freedesktop.ScreenSaver"), method);
}

QString programName() {
    return QCoreApplication::applicationName();
}

QString reason() {
    return QStringLiteral("Showing live pictures");
}

// Calls `finished` with the reply, from the event loop; never blocks.
template <class Reply, class Finished>
void callLater(const QDBusConnection& bus, const QDBusMessage& call, Finished finished) {
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, kReplyTimeoutMs));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [finished](QDBusPendingCallWatcher* done) {
                         const Reply reply = *done;
                         if (reply.isValid())
                             finished(reply);
                         else
                             qCDebug(lcPlatform, "keep awake: %s",
                                     qUtf8Printable(reply.error().message()));
                         done->deleteLater();
                     });
}

void uninhibitScreen(uint cookie) {
    QDBusMessage call = screenSaverCall(QStringLiteral("UnInhibit"));
    call << cookie;
    sessionBus().send(call);
}

}  // namespace

// Replies may come after the request was withdrawn; they hold a weak reference and undo then.
struct KeepAwake::Request {
    uint screenCookie = 0;  // 0: none
    QDBusUnixFileDescriptor sleepLock;

    static void inhibitScreen(const std::weak_ptr<Request>& weak);
    static void inhibitSleep(const std::weak_ptr<Request>& weak);
};

void KeepAwake::Request::inhibitScreen(const std::weak_ptr<Request>& weak) {
    const QDBusConnection bus = sessionBus();
    if (!bus.isConnected())
        return;
    QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"));
    call << programName() << reason();
    using Reply = QDBusPendingReply<uint>;
    callLater<Reply>(bus, call, [weak](const Reply& reply) {
        if (const auto request = weak.lock())
            request->screenCookie = reply.value();
        else
            uninhibitScreen(reply.value());
    });
}

void KeepAwake::Request::inhibitSleep(const std::weak_ptr<Request>& weak) {
    const QDBusConnection bus = systemBus();
    if (!bus.isConnected())
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << QStringLiteral("idle") << programName() << reason() << QStringLiteral("block");
    using Reply = QDBusPendingReply<QDBusUnixFileDescriptor>;
    callLater<Reply>(bus, call, [weak](const Reply& reply) {
        if (const auto request = weak.lock())
            request->sleepLock = reply.value();
    });
}

KeepAwake::KeepAwake() : m_request(std::make_shared<Request>()) {
    Request::inhibitScreen(m_request);
    Request::inhibitSleep(m_request);
}

KeepAwake::~KeepAwake() {
    if (m_request->screenCookie != 0)
        uninhibitScreen(m_request->screenCookie);
}

}  // namespace orvelle
