#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QTemporaryDir>

#include <poll.h>
#include <unistd.h>

#include <thread>

#include "platform/keep_awake.h"
#include "platform/suspend_delay.h"
#include "platform/suspend_watch.h"
#include "support/suites.h"

namespace {

// The screen saver, and the login service with its locks, each of them one end of a pipe.
struct FakeDesktop : QDBusVirtualObject {
    ~FakeDesktop() override {
        for (const int end : qAsConst(locks))
            close(end);
    }
    QString introspect(const QString&) const override { return QString(); }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        if (call.member() == QLatin1String("UnInhibit"))
            isReleased = call.arguments().value(0).toUInt() == 7;
        else if (!call.interface().contains(QLatin1String("login1")))
            bus.send(call.createReply(7U));
        else
            giveLock(call, bus);
        return true;
    }
    void giveLock(const QDBusMessage& call, const QDBusConnection& bus) {
        int ends[2];
        QVERIFY(pipe(ends) == 0);
        wanted = call.arguments().value(0).toString() + QLatin1Char(' ') +
                 call.arguments().value(3).toString();
        bus.send(call.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(ends[1]))));
        close(ends[1]);
        locks += ends[0];
    }
    // Who has the other end of the newest one has the lock.
    bool isLocked() const {
        pollfd end = {locks.isEmpty() ? -1 : locks.last(), POLLIN, 0};
        return !locks.isEmpty() && poll(&end, 1, 0) == 0;
    }

    QString wanted;
    QVector<int> locks;
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
            const int locksBefore = fake.locks.size();
            auto awake = std::make_unique<orvelle::KeepAwake>();
            if (isAnswered)
                QTRY_VERIFY(fake.isLocked());
            QVERIFY(!fake.isReleased);
            awake.reset();
            QTRY_VERIFY(fake.isReleased);
            QTRY_VERIFY(fake.locks.size() > locksBefore && !fake.isLocked());
        }
        QCOMPARE(fake.wanted, QStringLiteral("idle block"));
        auto delay = std::make_unique<orvelle::SuspendDelay>();
        QTRY_COMPARE(fake.wanted, QStringLiteral("sleep delay"));
        // The answer is on its way; then the lock stays, and goes on whatever thread.
        QTRY_VERIFY(fake.isLocked());
        std::thread([&delay] { delay.reset(); }).join();
        QTRY_VERIFY(!fake.isLocked());
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
