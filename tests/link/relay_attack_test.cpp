#include <deque>

#include "raw_client.h"
#include "support/udp_relay.h"

Q_DECLARE_METATYPE(orvelle::RelayDirection)

namespace orvelle::test {

namespace {

using Datagram = UdpRelay::Datagram;

constexpr size_t kTransportHeaderBytes = 16;
constexpr size_t kDestinationAt = 12;
constexpr int kOrderBytes = 100;  // of the payload, so that orders are known by their size
constexpr size_t kSealedOrderBytes = 8 + kOrderBytes + kSealBytes;

/// Kinds of datagrams, as somebody on the path can tell them apart. Pings and goodbyes look alike.
enum class Seen {
    Hello,
    Cookie,
    Welcome,
    Proof,
    Ready,
    Refused,
    Open,
    Opened,
    Greeting,  ///< sealed HELLO or WELCOME
    Token,     ///< sealed PING, PONG or BYE
    Order,     ///< sealed control message of kOrderBytes
    Media,
    Other,
};

bool isLogin(const Datagram& datagram) {
    return datagram.size() >= 16 && std::memcmp(datagram.data(), "OLD", 3) == 0;
}

bool isSearch(const Datagram& datagram) {
    return datagram.size() == kSearchBytes && std::memcmp(datagram.data(), "OL", 2) == 0;
}

bool isData(const Datagram& datagram) {
    return datagram.size() > kTransportHeaderBytes && datagram[0] < 0x80 && !isLogin(datagram) &&
           !isSearch(datagram);
}

Seen kindOf(const Datagram& datagram) {
    if (isLogin(datagram))
        return Seen(datagram[4] - 1);
    if (!isData(datagram))
        return Seen::Other;
    const size_t size = datagram.size() - kTransportHeaderBytes;
    if (size == encodeOpen({}).size())
        return Seen::Open;
    if (size == encodeOpened({}).size())
        return Seen::Opened;
    if (size == 4 + kSealBytes)
        return Seen::Greeting;
    if (size == 8 + kSealBytes)
        return Seen::Token;
    if (size == kSealedOrderBytes)
        return Seen::Order;
    return size > 500 ? Seen::Media : Seen::Other;
}

Datagram withPayloadOf(const Datagram& header, const Datagram& payload) {
    Datagram both = payload;
    std::copy_n(header.begin(), kTransportHeaderBytes, both.begin());
    return both;
}

/// The transport's own end of a connection, which carries no proof.
Datagram shutdownOf(const Datagram& ofSameSocket) {
    Datagram packet(kTransportHeaderBytes + 4, 0);
    packet[0] = 0x80;
    packet[1] = 5;
    std::copy_n(ofSameSocket.begin() + kDestinationAt, 4, packet.begin() + kDestinationAt);
    return packet;
}

/// Lets a relay tamper while it lives, so that what the hook uses outlives it.
class Tampering {
public:
    Tampering(UdpRelay& relay, UdpRelay::Tamper tamper) : m_relay(relay) {
        m_relay.setTamper(std::move(tamper));
    }
    ~Tampering() { m_relay.setTamper({}); }
    Tampering(const Tampering&) = delete;
    Tampering& operator=(const Tampering&) = delete;

private:
    UdpRelay& m_relay;
};

QByteArray order(char letter) {
    return QByteArray(kOrderBytes, letter);
}

QByteArray noted(char letter) {
    return "680:" + order(letter);
}

}  // namespace

/// A relay between the two ends that changes, repeats, moves and makes up what they say. What is
/// believed is what the other end said, or nothing, and the next login finds all as it was.
class RelayAttackTest : public LinkSuite {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void changedMessage_isNeverBelieved_data();
    void changedMessage_isNeverBelieved();
    void changedGoodbye_isNone_data();
    void changedGoodbye_isNone();
    void movedMessage_isNotObeyed_data();
    void movedMessage_isNotObeyed();
    void session_works_whenEverythingIsRepeatedAndReordered();
    void forgedShutdown_isNoGoodbye_data();
    void forgedShutdown_isNoGoodbye();
    void shutdownFromElsewhere_isIgnored_data();
    void shutdownFromElsewhere_isIgnored();
    void recordedLogin_opensNothing();
    void recordedSocket_isNotObeyed_data();
    void recordedSocket_isNotObeyed();

private:
    void talk(TestClient& client);
    void verifyHealed();

    std::unique_ptr<TestCamera> m_camera;
    std::unique_ptr<UdpRelay> m_relay;
};

void RelayAttackTest::init() {
    m_camera = std::make_unique<TestCamera>();
    m_relay = std::make_unique<UdpRelay>(m_camera->server().port());
}

void RelayAttackTest::cleanup() {
    m_relay.reset();
    m_camera.reset();
}

/// Orders and a picture both ways; whatever arrives must be what was sent.
void RelayAttackTest::talk(TestClient& client) {
    avSendIOCtrl(client.av(), 0x680, order('a').constData(), kOrderBytes);
    [[maybe_unused]] const bool hasCome =
        QTest::qWaitFor([&] { return m_camera->controls().size() > 0; }, 500);
    for (const QByteArray& got : m_camera->controls())
        QCOMPARE(got, noted('a'));
    const QByteArray answer = order('b');
    m_camera->server().sendControl(m_camera->lastClient(), 0x680, answer.constData(), kOrderBytes);
    m_camera->sendVideo(5000, true);
    QByteArray message;
    if (client.control(&message) >= 0)
        QCOMPARE(message, noted('b'));
    const ReceivedFrame frame = client.video(500);
    if (frame.code >= 0)
        QCOMPARE(frame.data.mid(8), QByteArray(4992, 0x5A));
}

/// A login at once, with the relay honest again.
void RelayAttackTest::verifyHealed() {
    m_relay->setTamper({});
    const int orders = m_camera->controls().size();
    TestClient client;
    QVERIFY(connectThrough(m_relay->port(), client) >= 0);
    QCOMPARE(avSendIOCtrl(client.av(), 0x680, order('z').constData(), kOrderBytes), 0);
    QTRY_COMPARE(m_camera->controls().size(), orders + 1);
    QCOMPARE(m_camera->controls().last(), noted('z'));
    QCOMPARE(pictureAcross(*m_camera, m_camera->lastClient(), client, 5000), 5000);
}

void RelayAttackTest::changedMessage_isNeverBelieved_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<RelayDirection>("direction");
    QTest::addColumn<bool>("atEnd");
    struct Row {
        const char* name;
        Seen kind;
        RelayDirection direction;
    };
    const auto up = RelayDirection::ToCamera;
    const auto down = RelayDirection::ToClient;
    for (const Row& row : {Row{"hello", Seen::Hello, up},
                           {"cookie", Seen::Cookie, down},
                           {"welcome", Seen::Welcome, down},
                           {"proof", Seen::Proof, up},
                           {"ready", Seen::Ready, down},
                           {"open", Seen::Open, up},
                           {"opened", Seen::Opened, down},
                           {"sealed hello", Seen::Greeting, up},
                           {"sealed welcome", Seen::Greeting, down},
                           {"ping", Seen::Token, up},
                           {"pong", Seen::Token, down},
                           {"order", Seen::Order, up},
                           {"answer", Seen::Order, down},
                           {"picture", Seen::Media, down}}) {
        for (const bool atEnd : {false, true})
            QTest::addRow("%s, %s", row.name, atEnd ? "last byte" : "middle")
                << int(row.kind) << row.direction << atEnd;
    }
}

void RelayAttackTest::changedMessage_isNeverBelieved() {
    QFETCH(int, kind);
    QFETCH(RelayDirection, direction);
    QFETCH(bool, atEnd);
    std::atomic<int> changed{0};
    const Tampering tampering(*m_relay, [&](RelayDirection way, Datagram datagram) {
        if (way == direction && kindOf(datagram) == Seen(kind)) {
            const size_t begin = isData(datagram) ? kTransportHeaderBytes : 0;
            datagram[atEnd ? datagram.size() - 1 : (begin + datagram.size()) / 2] ^= 1;
            ++changed;
        }
        return std::vector<Datagram>{datagram};
    });
    TestClient client;
    if (connectThrough(m_relay->port(), client) >= 0) {
        talk(client);
        QTRY_VERIFY(changed > 0);
        if (Seen(kind) == Seen::Token) {
            QByteArray message;
            QVERIFY(client.control(&message) < 0);
        }
    }
    QVERIFY(changed > 0);
    QCOMPARE(m_camera->orderlyGone(), 0);
    client.close();
    verifyHealed();
}

void RelayAttackTest::changedGoodbye_isNone_data() {
    QTest::addColumn<RelayDirection>("direction");
    QTest::newRow("of the client") << RelayDirection::ToCamera;
    QTest::newRow("of the camera") << RelayDirection::ToClient;
}

void RelayAttackTest::changedGoodbye_isNone() {
    QFETCH(RelayDirection, direction);
    TestClient client;
    QVERIFY(connectThrough(m_relay->port(), client) >= 0);
    const Tampering tampering(*m_relay, [&](RelayDirection way, Datagram datagram) {
        if (way == direction && kindOf(datagram) == Seen::Token)
            datagram.back() ^= 1;
        return std::vector<Datagram>{datagram};
    });
    if (direction == RelayDirection::ToCamera) {
        client.close();
        QTRY_COMPARE(m_camera->lostGone(), 1);
        QCOMPARE(m_camera->orderlyGone(), 0);
    } else {
        m_camera->server().stop();
        QByteArray message;
        const int reason = client.control(&message);
        QVERIFY(reason == LINK_ER_PROTOCOL || reason == AV_ER_REMOTE_TIMEOUT_DISCONNECT);
    }
}

void RelayAttackTest::movedMessage_isNotObeyed_data() {
    QTest::addColumn<RelayDirection>("direction");
    QTest::addColumn<QByteArray>("how");
    QTest::addColumn<QVector<QByteArray>>("obeyed");
    const QVector<QByteArray> none;
    for (const auto direction : {RelayDirection::ToCamera, RelayDirection::ToClient}) {
        const char* const end = direction == RelayDirection::ToCamera ? "camera" : "client";
        QTest::addRow("%s: repeated", end)
            << direction << QByteArray("repeat") << QVector<QByteArray>{noted('1')};
        QTest::addRow("%s: swapped", end) << direction << QByteArray("swap") << none;
        QTest::addRow("%s: sent back", end) << direction << QByteArray("reflect") << none;
    }
}

// The transport's packets are put together anew, so that it has nothing to complain about.
void RelayAttackTest::movedMessage_isNotObeyed() {
    QFETCH(RelayDirection, direction);
    QFETCH(QByteArray, how);
    std::deque<Datagram> orders;  // that went by in the direction of the attack
    Datagram other;               // one that went the other way
    std::atomic<bool> hasOther{false};
    const Tampering tampering(*m_relay, [&](RelayDirection way, const Datagram& datagram) {
        std::vector<Datagram> passing{datagram};
        if (kindOf(datagram) != Seen::Order)
            return passing;
        if (way != direction) {
            other = datagram;
            hasOther = true;
            return passing;
        }
        if (how == "reflect")
            return std::vector<Datagram>{withPayloadOf(datagram, other)};
        orders.push_back(datagram);
        if (how == "repeat")
            return std::vector<Datagram>{withPayloadOf(datagram, orders.front())};
        if (orders.size() < 2)
            return std::vector<Datagram>{};
        return std::vector<Datagram>{withPayloadOf(orders[0], orders[1]),
                                     withPayloadOf(orders[1], orders[0])};
    });
    TestClient client;
    QVERIFY(connectThrough(m_relay->port(), client) >= 0);
    const auto send = [&](bool isToCamera, char letter) {
        const QByteArray text = order(letter);
        if (isToCamera)
            avSendIOCtrl(client.av(), 0x680, text.constData(), kOrderBytes);
        else
            m_camera->server().sendControl(m_camera->lastClient(), 0x680, text.constData(),
                                           kOrderBytes);
    };
    const bool isToCamera = direction == RelayDirection::ToCamera;
    if (how == "reflect") {
        send(!isToCamera, 'r');
        QTRY_VERIFY(hasOther);
    }
    send(isToCamera, '1');
    send(isToCamera, '2');
    QVector<QByteArray> obeyed;
    QByteArray message;
    int reason = 0;
    while ((reason = client.control(&message)) >= 0)
        obeyed << message;
    QVERIFY(reason != AV_ER_TIMEOUT && reason != AV_ER_SESSION_CLOSE_BY_REMOTE);
    QTRY_COMPARE(m_camera->server().stats().clients, 0);
    QCOMPARE(m_camera->orderlyGone(), 0);
    if (isToCamera)
        obeyed = m_camera->controls();
    QTEST(obeyed, "obeyed");
    verifyHealed();
}

void RelayAttackTest::session_works_whenEverythingIsRepeatedAndReordered() {
    std::map<RelayDirection, std::vector<Datagram>> held;
    int count = 0;
    const Tampering tampering(*m_relay, [&](RelayDirection way, const Datagram& datagram) {
        std::vector<Datagram>& waiting = held[way];
        waiting.push_back(datagram);
        waiting.push_back(datagram);
        if (++count % 3 == 0)
            return std::vector<Datagram>{};  // overtaken by the next
        std::reverse(waiting.begin(), waiting.end());
        return std::exchange(waiting, {});
    });
    // The transport may refuse a handshake that comes twice; whoever uses it then tries again.
    std::optional<TestClient> connected;
    const bool isConnected = QTest::qWaitFor(
        [&] {
            connected.emplace();
            return connectThrough(m_relay->port(), *connected) >= 0;
        },
        20000);
    QVERIFY(isConnected);
    TestClient& client = *connected;
    QVector<QByteArray> sent;
    for (char letter = 'a'; letter <= 'p'; ++letter) {
        QCOMPARE(avSendIOCtrl(client.av(), 0x680, order(letter).constData(), kOrderBytes), 0);
        QCOMPARE(m_camera->sendVideo(5000, letter == 'a'), 0);
        sent << noted(letter);
    }
    int pictures = 0;
    for (int64_t last = -1;
         pictures + int(m_camera->server().stats().videoFramesDropped) < sent.size();) {
        const ReceivedFrame frame = client.video();
        QVERIFY(frame.code == 5000 || frame.code == AV_ER_LOSED_THIS_FRAME);
        pictures += frame.code > 0 ? 1 : 0;
        QVERIFY(frame.code < 0 || int64_t{frame.number} > last);
        last = frame.code > 0 ? int64_t{frame.number} : last;
    }
    QVERIFY(pictures > 0);
    QTRY_COMPARE(m_camera->controls(), sent);
}

void RelayAttackTest::forgedShutdown_isNoGoodbye_data() {
    changedGoodbye_isNone_data();
}

void RelayAttackTest::forgedShutdown_isNoGoodbye() {
    QFETCH(RelayDirection, direction);
    TestClient client;
    QVERIFY(connectThrough(m_relay->port(), client) >= 0);
    std::atomic<int> forged{0};
    const Tampering tampering(*m_relay, [&](RelayDirection way, const Datagram& datagram) {
        std::vector<Datagram> passing{datagram};
        if (way == direction && isData(datagram)) {
            passing.push_back(shutdownOf(datagram));
            ++forged;
        }
        return passing;
    });
    QByteArray message;
    QCOMPARE(client.control(&message), int{AV_ER_REMOTE_TIMEOUT_DISCONNECT});
    QVERIFY(forged > 0);
    QTRY_COMPARE(m_camera->lostGone(), 1);
    QCOMPARE(m_camera->orderlyGone(), 0);
    verifyHealed();
}

void RelayAttackTest::shutdownFromElsewhere_isIgnored_data() {
    changedGoodbye_isNone_data();
}

// It names the right socket, but comes from an address of its own.
void RelayAttackTest::shutdownFromElsewhere_isIgnored() {
    QFETCH(RelayDirection, direction);
    std::mutex mutex;
    std::map<Datagram, Datagram> shutdowns;  // by the socket they end
    const Tampering tampering(*m_relay, [&](RelayDirection way, const Datagram& datagram) {
        if (way == direction && isData(datagram)) {
            const Datagram packet = shutdownOf(datagram);
            const std::lock_guard<std::mutex> lock(mutex);
            shutdowns[Datagram(packet.begin() + kDestinationAt, packet.end())] = packet;
        }
        return std::vector<Datagram>{datagram};
    });
    TestClient client;
    QVERIFY(connectThrough(m_relay->port(), client) >= 0);
    QByteArray answer = order('x');
    m_camera->server().sendControl(m_camera->lastClient(), 0x680, answer.constData(), kOrderBytes);
    QVERIFY(client.control(&answer) >= 0);
    m_relay->setTamper({});
    const uint16_t port = direction == RelayDirection::ToCamera
                              ? m_camera->server().port()
                              : localPort(LinkClient::instance().channel(client.av())->controlId());
    const sockaddr_in target = *ipv4Address("127.0.0.1", port);
    DatagramSocket stranger;
    QCOMPARE(shutdowns.size(), size_t{2});
    for (const auto& [socket, packet] : shutdowns)
        QVERIFY(stranger.send(packet.data(), packet.size(), target));
    talk(client);
    QCOMPARE(m_camera->controls().size(), 1);
    QCOMPARE(m_camera->lostGone(), 0);
    QVERIFY(avCheckAudioBuf(client.av()) >= 0);
}

// Played from the very address that it came from, while the cookie in it is still good.
void RelayAttackTest::recordedLogin_opensNothing() {
    std::mutex mutex;
    std::vector<Datagram> recorded;
    std::atomic<int> readies{0};
    const Tampering tampering(*m_relay, [&](RelayDirection way, const Datagram& datagram) {
        if (way == RelayDirection::ToCamera && isLogin(datagram)) {
            const std::lock_guard<std::mutex> lock(mutex);
            recorded.push_back(datagram);
        }
        readies += kindOf(datagram) == Seen::Ready ? 1 : 0;
        return std::vector<Datagram>{datagram};
    });
    const auto takeRecorded = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(recorded, {});
    };
    for (const bool isStillThere : {true, false}) {
        takeRecorded();
        TestClient client;
        QVERIFY(connectThrough(m_relay->port(), client) >= 0);
        const int sessions = m_camera->connected();
        if (!isStillThere) {
            client.close();
            QTRY_COMPARE(m_camera->server().stats().clients, 0);
            QTest::qWait(3500);  // the camera has forgotten the exchange
            readies = 0;
        }
        const uint64_t before = m_relay->forwardedDatagrams(RelayDirection::ToClient);
        m_relay->playToCamera(takeRecorded());
        QTRY_VERIFY(m_relay->forwardedDatagrams(RelayDirection::ToClient) > before);
        QTest::qWait(300);
        QCOMPARE(m_camera->connected(), sessions);
        QCOMPARE(m_camera->server().stats().clients, isStillThere ? 1 : 0);
        QVERIFY(isStillThere || readies == 0);  // while it is remembered, READY is repeated
    }
    verifyHealed();
}

void RelayAttackTest::recordedSocket_isNotObeyed_data() {
    QTest::addColumn<int>("purpose");
    QTest::addColumn<QByteArray>("state");
    QTest::newRow("control, still open") << int(SocketPurpose::Control) << QByteArray("open");
    QTest::newRow("control, gone") << int(SocketPurpose::Control) << QByteArray("gone");
    QTest::newRow("media, still open") << int(SocketPurpose::Media) << QByteArray("open");
    QTest::newRow("media, closed") << int(SocketPurpose::Media) << QByteArray("closed");
    QTest::newRow("media, session gone") << int(SocketPurpose::Media) << QByteArray("gone");
}

// Everything that one socket carried to the camera, said again on a new one from the client's own
// address: nobody else's reaches the transport.
void RelayAttackTest::recordedSocket_isNotObeyed() {
    QFETCH(int, purpose);
    QFETCH(QByteArray, state);
    std::mutex mutex;
    std::vector<Datagram> recorded;
    std::atomic<bool> isRecording{false};
    const Tampering tampering(*m_relay, [&](RelayDirection way, const Datagram& datagram) {
        if (way == RelayDirection::ToCamera && isRecording && isData(datagram)) {
            const std::lock_guard<std::mutex> lock(mutex);
            recorded.push_back(datagram);
        }
        return std::vector<Datagram>{datagram};
    });
    RawClient client(m_relay->port());
    QCOMPARE(client.logIn(), 0);
    isRecording = purpose == int(SocketPurpose::Control);
    QVERIFY(client.connectSocket());
    QCOMPARE(client.open(client.makeOpenFor(SocketPurpose::Control, 0)), 0);
    QVERIFY(client.hello());
    const EncodedMessage once = encodeMessage(
        ControlMessage{0x680, reinterpret_cast<const uint8_t*>(order('1').constData()), 100});
    client.send(QByteArray(reinterpret_cast<const char*>(once.bytes.data()), int(once.size)));
    QTRY_COMPARE(m_camera->controls(), QVector<QByteArray>{noted('1')});
    auto control = client.takeSealed();
    std::unique_ptr<SealedSocket> media;
    const auto isChannelOpen = [&] {
        return m_camera->server().isChannelOpen(m_camera->lastClient(), 0);
    };
    if (purpose == int(SocketPurpose::Media)) {
        isRecording = true;
        QVERIFY(client.connectSocket());
        QCOMPARE(client.open(client.makeOpenFor(SocketPurpose::Media, 0)), 0);
        QVERIFY(client.hello());
        media = client.takeSealed();
        QVERIFY(isChannelOpen());
    }
    isRecording = false;
    if (state != "open") {
        media.reset();
        QTRY_VERIFY(!isChannelOpen());
    }
    if (state == "gone") {
        control.reset();
        QTRY_COMPARE(m_camera->server().stats().clients, 0);
    }

    std::vector<Datagram> played;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        played.swap(recorded);
    }
    QVERIFY(played.size() >= 2);
    const bool isLetThrough = client.connectSocket();
    QVERIFY(isLetThrough || state == "gone");  // the port may be closed by now
    for (const Datagram& datagram : played)
        client.sendPlain(Bytes(datagram.begin() + kTransportHeaderBytes, datagram.end()));
    QTRY_VERIFY(!client.isConnected());
    QCOMPARE(m_camera->connected(), 1);
    QCOMPARE(m_camera->controls().size(), 1);
    QCOMPARE(isChannelOpen(), media != nullptr);
    QCOMPARE(m_camera->server().stats().clients, state == "gone" ? 0 : 1);
}

static const RegisterSuite<RelayAttackTest> kRegisterRelayAttack;

}  // namespace orvelle::test

#include "relay_attack_test.moc"
