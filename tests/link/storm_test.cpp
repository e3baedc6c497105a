#include "support/storm.h"
#include "link_fixture.h"
#include "support/process_probe.h"

namespace orvelle::test {

namespace {

constexpr int kStormMs = 2500;
constexpr int kPictureBytes = 5000;
constexpr double kMaxGrowthMib = 64;  // sanitizers take their share; a hole takes hundreds

double residentMib() {
    return residentMibOf(QCoreApplication::applicationPid());
}

}  // namespace

/// Strangers in number: the camera keeps its viewer, lets others in, and stays as small as it was.
class StormTest : public LinkSuite {
    Q_OBJECT

private slots:
    void camera_keepsServing_inStorm_data();
    void camera_keepsServing_inStorm();
};

void StormTest::camera_keepsServing_inStorm_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("perSecond");
    QTest::addColumn<int>("sources");
    const auto row = [](const char* name, Storm::Kind kind, int perSecond, int sources = 20) {
        QTest::newRow(name) << int(kind) << perSecond << sources;
    };
    row("handshakes", Storm::Kind::Handshakes, 3000);
    row("noise", Storm::Kind::Noise, 3000);
    row("wrong shares", Storm::Kind::WrongShares, 3000);
    row("probes", Storm::Kind::Probes, 3000);
    row("half open", Storm::Kind::HalfOpen, 500, 300);
    row("wrong passwords", Storm::Kind::WrongPasswords, 300);
}

void StormTest::camera_keepsServing_inStorm() {
    QFETCH(int, kind);
    QFETCH(int, perSecond);
    QFETCH(int, sources);
    TestCamera camera;
    const AddressOverride address(kUid, camera.server().port());
    TestClient viewer;
    QVERIFY(viewer.connect() >= 0);
    const int viewerId = camera.lastClient();
    const double beforeMib = residentMib();
    Storm storm(Storm::Kind(kind), camera.server().port(), kUid, perSecond, sources, sources);
    QVERIFY(storm.isUsable());
    const QDeadlineTimer end(kStormMs);
    int logins = 0;
    while (!end.hasExpired() || logins == 0) {
        QCOMPARE(pictureAcross(camera, viewerId, viewer, kPictureBytes), kPictureBytes);
        TestClient other;
        QVERIFY(other.connect() >= 0);
        ++logins;
        QTest::qWait(200);
    }
    QVERIFY(storm.sent() > 100);
    QCOMPARE(storm.admitted(), int64_t{0});
    QCOMPARE(camera.connected(), 1 + logins);
    QCOMPARE(camera.lostGone(), 0);
    const double growthMib = residentMib() - beforeMib;
    QVERIFY2(growthMib < kMaxGrowthMib, qPrintable(QString::number(growthMib)));
}

static const RegisterSuite<StormTest> kRegisterStorm;

}  // namespace orvelle::test

#include "storm_test.moc"
