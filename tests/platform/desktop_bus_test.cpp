#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QTemporaryDir>

#include "platform/keep_awake.h"
#include "platform/suspend_watch.h"
#include "support/suites.h"

namespace {

// The screen saver; as the login service it answers with a wrong type, which must do no harm.
struct FakeDesktop : QDBusVirtualObject {
    QString introspect(const QString&) const override { return QString(); }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        if (call.member() == QLatin1String("UnInhibit"))
            isReleased = call.arguments().value(0).toUInt() == 7;
        else
            bus.send(call.createReply(7U));
        requests += call.member() == QLatin1String("Inhibit") ? 1 : 0;
        return true;
    }
    int requests = 0;
    bool isReleased = false;
};

class DesktopBusTest : public QObject {
    Q_OBJECT

private slots:
    void keepAwakeAndSuspendWatch_useTheDesktopsServices() {
        const QTemporaryDir directory;
        QProcess daemon;
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"),
                      QStringLiteral("--print-address"),
                      QStringLiteral("--address=unix:dir=") + directory.path()});
        QVERIFY2(daemon.waitForReadyRead(), "no dbus-daemon");
        const QByteArray address = daemon.readLine().trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
        const QString name = QStringLiteral("desktop");
        QDBusConnection bus = QDBusConnection::connectToBus(QString::fromLatin1(address), name);
        QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.ScreenSaver")));
        const QString login = QStringLiteral("org.freedesktop.login1");
        QVERIFY(bus.registerService(login));
        FakeDesktop fake;
        bus.registerVirtualObject(QStringLiteral("/"), &fake, QDBusConnection::SubPath);

        for (const bool isAnswered : {true, false}) {
            fake.isReleased = false;
            auto awake = std::make_unique<orvelle::KeepAwake>();
            if (isAnswered)
                QTRY_COMPARE(fake.requests, 2);
            QVERIFY(!fake.isReleased);
            awake.reset();
            QTRY_VERIFY(fake.isReleased);
        }
        int sleeps = 0;
        const orvelle::SuspendWatch watch([&] { ++sleeps; });
        for (const bool isBefore : {false, true, false, true})
            bus.send(QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                                login + QStringLiteral(".Manager"),
                                                QStringLiteral("PrepareForSleep"))
                     << isBefore);
        QTRY_COMPARE(sleeps, 2);

        QDBusConnection::disconnectFromBus(name);
        daemon.kill();
        QVERIFY(daemon.waitForFinished());
    }
};

const orvelle::test::RegisterSuite<DesktopBusTest> kRegistered;

}  // namespace

#include "desktop_bus_test.moc"
