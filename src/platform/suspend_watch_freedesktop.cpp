#include "platform/suspend_watch.h"

#include "platform/freedesktop.h"

#include <QObject>

#include <utility>

namespace orvelle {

// The D-Bus binding reaches slots by name only, so this one is a QObject.
struct SuspendWatch::Receiver : public QObject {
    Q_OBJECT

public:
    explicit Receiver(std::function<void()> callback) : m_callback(std::move(callback)) {}

public slots:
    void prepareForSleep(bool before) {
        if (before)
            m_callback();
    }

private:
    const std::function<void()> m_callback;
};

SuspendWatch::SuspendWatch(std::function<void()> aboutToSuspend)
    : m_receiver(std::make_unique<Receiver>(std::move(aboutToSuspend))) {
    QDBusConnection bus = systemBus();
    if (bus.isConnected())
        bus.connect(
            QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
            m_receiver.get(), SLOT(prepareForSleep(bool)));
}

SuspendWatch::~SuspendWatch() = default;

}  // namespace orvelle

#include "suspend_watch_freedesktop.moc"
