#include <random>

#include "link/environment.h"
#include "platform/datagram_socket.h"
#include "raw_camera.h"
#include "raw_client.h"

namespace orvelle::test {

namespace {

/// Throws bytes at a UDP port of this machine: noise, handshakes with flipped bits, torn and
/// oversized ones.
void bombard(uint16_t port, uint32_t seed) {
    DatagramSocket socket;
    const sockaddr_in to = *ipv4Address("127.0.0.1", port);
    std::mt19937 random(seed);
    // The fixed part of a transport handshake: control bit, type 0, version 4, extension 2.
    std::vector<uint8_t> handshake(64);
    handshake[0] = 0x80;
    handshake[19] = 4;
    handshake[23] = 2;
    for (int i = 0; i < 3000; ++i) {
        std::vector<uint8_t> bytes = handshake;
        if (i % 3 == 0)
            bytes.assign(random() % 1500, 0);
        for (unsigned flips = random() % 8; i % 3 != 0 && flips > 0; --flips)
            bytes[random() % bytes.size()] = uint8_t(random());
        if (i % 3 == 0)
            std::generate(bytes.begin(), bytes.end(), [&] { return uint8_t(random()); });
        if (i % 3 == 2)
            bytes.resize(random() % 9000);
        socket.send(bytes.data(), bytes.size(), to);
    }
}

uint16_t freePort() {
    DatagramSocket socket;
    return socket.bindExclusively(*ipv4Address("127.0.0.1", 0)) ? socket.port() : uint16_t{0};
}

QByteArray encoded(const Message& message) {
    const EncodedMessage bytes = encodeMessage(message);
    return QByteArray(reinterpret_cast<const char*>(bytes.bytes.data()), int(bytes.size));
}

}  // namespace

/// Bytes that neither end should ever get, from outside and from a peer that has logged in.
class HostileTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { LinkClient::instance().shutDown(); }
    void session_goesOn_whenPortsAreBombarded();
    void channel_isCutOff_whenCameraBreaksProtocol_data();
    void channel_isCutOff_whenCameraBreaksProtocol();
    void client_isCutOff_whenItBreaksProtocol_data();
    void client_isCutOff_whenItBreaksProtocol();
    void server_doesNotStart_whenUnusable();

private:
    uint16_t m_clientPort = 0;
};

void HostileTest::initTestCase() {
    m_clientPort = freePort();
    QCOMPARE(IOTC_Initialize2(m_clientPort), 0);
    avInitialize(32);
}

void HostileTest::session_goesOn_whenPortsAreBombarded() {
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    uint32_t seed = 1;
    for (const uint16_t port : {camera.server().port(), m_clientPort, discoveryPort()})
        bombard(port, seed++);
    QCOMPARE(camera.sendVideo(5000, true), 0);
    QCOMPARE(client.video().code, 5000);
    QCOMPARE(avSendIOCtrl(client.av(), 7, "x", 1), 0);
    QTRY_COMPARE(camera.controls(), QVector<QByteArray>{"7:x"});
    QVERIFY(TestClient().connect() >= 0);  // the search still answers, the port still accepts
}

void HostileTest::channel_isCutOff_whenCameraBreaksProtocol_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("reason");
    const int broken = LINK_ER_PROTOCOL;
    QTest::newRow("noise") << QByteArray(int(kMaxMessageBytes), '\x07') << broken;
    QTest::newRow("one byte") << QByteArray(1, '\6') << broken;
    QTest::newRow("frame of 4 GB")
        << QByteArray::fromHex("07000000FFFF000000000000FFFFFFFF") + QByteArray(1424, 'x')
        << broken;
    QTest::newRow("a second welcome") << encoded(WelcomeMessage{}) << broken;
    QTest::newRow("bye with a time-out as reason")
        << encoded(ByeMessage{AV_ER_TIMEOUT}) << int{AV_ER_SESSION_CLOSE_BY_REMOTE};
}

void HostileTest::channel_isCutOff_whenCameraBreaksProtocol() {
    QFETCH(QByteArray, bytes);
    RawCamera camera;
    const AddressOverride address(kUid, camera.port());
    TestClient client;
    QCOMPARE(client.find(), client.sid());
    std::thread login([&] { client.logIn(); });
    const bool isWelcomed = camera.acceptLogin() && camera.welcome();
    login.join();
    QVERIFY(isWelcomed && client.av() >= 0);
    camera.send(bytes);
    QByteArray message;
    QTEST(client.control(&message), "reason");
    QTEST(client.video().code, "reason");
}

void HostileTest::client_isCutOff_whenItBreaksProtocol_data() {
    QTest::addColumn<bool>("saysHello");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("noise as hello") << false << QByteArray(100, '\1');
    QTest::newRow("control before hello") << false << encoded(ControlMessage{});
    QTest::newRow("noise") << true << QByteArray(int(kMaxMessageBytes), '\xEE');
    QTest::newRow("hello twice") << true << encoded(HelloMessage{});
    QTest::newRow("torn control") << true << QByteArray::fromHex("0600FFFF80060000");
}

void HostileTest::client_isCutOff_whenItBreaksProtocol() {
    QFETCH(bool, saysHello);
    QFETCH(QByteArray, bytes);
    TestCamera camera;
    TestClient good;
    QVERIFY(good.connect() >= 0);

    RawClient bad(camera.server().port());
    QVERIFY(bad.connect());
    if (saysHello) {
        QVERIFY(bad.hello());
        QTRY_COMPARE(camera.connected(), 2);
    }
    bad.send(bytes);
    QTRY_VERIFY(srt_getsockstate(bad.id()) != SRTS_CONNECTED);
    QTRY_COMPARE(camera.lostGone(), saysHello ? 1 : 0);
    QCOMPARE(camera.controls().size(), 0);
    QCOMPARE(camera.server().stats().clients, 1);
    QCOMPARE(avSendIOCtrl(good.av(), 1, "", 0), 0);
    QTRY_COMPARE(camera.controls().size(), 1);
}

void HostileTest::server_doesNotStart_whenUnusable() {
    TestCamera other;
    const auto started = [&](const char* uid, const char* password, uint16_t port) {
        LinkServerConfig config;
        config.uid = uid;
        config.password = password;
        config.port = port;
        return LinkServer(config, &other).start();
    };
    QCOMPARE(started("../x", "p", 0), int{LINK_ER_BAD_UID});
    QCOMPARE(started("X", "", 0), int{AV_ER_INVALID_ARG});
    QCOMPARE(started("X", "p", other.server().port()), int{LINK_ER_NETWORK});
    QCOMPARE(started("X", "p", 0), 0);
}

static const RegisterSuite<HostileTest> kRegisterHostile;

}  // namespace orvelle::test

#include "hostile_test.moc"
