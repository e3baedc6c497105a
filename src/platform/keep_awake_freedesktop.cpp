#include "platform/keep_awake.h"

#include "platform/freedesktop.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingReply>

namespace orvelle {
namespace {

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

void uninhibitScreen(uint cookie) {
    QDBusMessage call = screenSaverCall(QStringLiteral("UnInhibit"));
    call << cookie;
    sessionBus().send(call);
}

}  // namespace

// A reply may come after the request was withdrawn; it holds a weak reference and is undone then.
struct KeepAwake::Request {
    uint screenCookie = 0;  // 0: none
    std::shared_ptr<void> idleLock;

    static void inhibitScreen(const std::weak_ptr<Request>& weak);
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

KeepAwake::KeepAwake() : m_request(std::make_shared<Request>()) {
    Request::inhibitScreen(m_request);
    m_request->idleLock = loginLock(QStringLiteral("idle"), QStringLiteral("block"), reason());
}

KeepAwake::~KeepAwake() {
    if (m_request->screenCookie != 0)
        uninhibitScreen(m_request->screenCookie);
}

}  // namespace orvelle
