#include "link/client/lan_query.h"
#include "link/environment.h"
#include "link/wire/version_one.h"
#include "raw_client.h"
#include "support/udp_relay.h"

namespace orvelle::test {

namespace {

constexpr int kPictureBytes = 5000;

/// What somebody without the password does who answers to a camera's UID.
enum class Trick {
    Silence,    ///< answers the search only
    Transport,  ///< takes any connection of the transport, as version 4 did, and sends a picture
    Ready,      ///< plays the login through with a share of its own and a tag made up
    Echo,       ///< sends the client's own share, nonce and tag back
    Stall,      ///< plays the login to WELCOME
    Cookies,    ///< a new cookie for each HELLO
    Flood,      ///< answers HELLO with noise for as long as it lives
    WrongPassword,
    OtherVersion,
    Full,
};

/// One rogue at an address of its own, on a thread of its own. It answers the search at once.
class Rogue {
public:
    Rogue(Trick trick, int number, int answers = 1)
        : m_trick(trick), m_answers(answers), m_thread([this, number] { run(number); }) {
        while (!m_isReady)
            std::this_thread::yield();
    }
    ~Rogue() {
        m_isStopped = true;
        m_thread.join();
    }

    int searches() const { return m_searches; }
    int hellos() const { return m_hellos; }
    int proofs() const { return m_proofs; }
    int handshakes() const { return m_handshakes; }

private:
    void run(int number) {
        startCrypto();
        DatagramSocket search;
        sockaddr_in discovery = *ipv4Address("127.255.255.255", discoveryPort());
        const std::string own = "127.0.0." + std::to_string(2 + number);
        if (!search.bindShared(discovery) || !m_socket.bindExclusively(*ipv4Address(own, 0)))
            qFatal("the rogue does not start");
        m_isReady = true;
        while (!m_isStopped) {
            DatagramSocket::waitForAny({&search, &m_socket}, 5);
            uint8_t buffer[2048];
            sockaddr_in from{};
            for (int size; (size = search.receive(buffer, sizeof buffer, from)) >= 0;)
                answerSearch(buffer, size_t(size), from);
            for (int size; (size = m_socket.receive(buffer, sizeof buffer, from)) >= 0;)
                answer(buffer, size_t(size), from);
            for (int i = 0; m_trick == Trick::Flood && m_target.sin_port != 0 && i < 1000; ++i)
                m_socket.send(buffer, 100, m_target);
        }
    }

    void answerSearch(const uint8_t* data, size_t size, const sockaddr_in& from) {
        const auto query = decodeSearchQuery(data, size);
        if (!query || query->uid != kUid)
            return;
        ++m_searches;
        for (int i = 0; i < m_answers; ++i) {
            const auto port = i == 0 ? m_socket.port() : uint16_t(1000 + i);
            const auto bytes =
                encodeSearchAnswer({query->nonce, kUid, port, "Rogue", kProtocolVersion});
            m_socket.send(bytes.data(), bytes.size(), from);
        }
    }

    void answer(const uint8_t* data, size_t size, const sockaddr_in& from) {
        const auto message = decodeLogin(data, size);
        if (!message) {
            shakeHands(data, size, from);
            return;
        }
        if (const auto* hello = std::get_if<LoginHello>(&*message))
            answerHello(*hello, from);
        if (const auto* proof = std::get_if<LoginProof>(&*message))
            answerProof(*proof, from);
    }

    void answerHello(const LoginHello& hello, const sockaddr_in& from) {
        ++m_hellos;
        m_login = from;
        LoginWelcome welcome{hello.token, {}, {}};
        LoginCookie cookie{hello.token, {}};
        switch (m_trick) {
            case Trick::Silence:
            case Trick::Transport:
                return;
            case Trick::Ready:
            case Trick::Stall: {
                const CpaceGenerator guess("guessed wrong", loginContext(kUid, kLinkAccount));
                welcome.share = CpaceExchange(CpaceExchange::Role::Responder, guess).share();
                return send(welcome, from);
            }
            case Trick::Echo:
                welcome.share = hello.share;
                welcome.nonce = hello.nonce;
                return send(welcome, from);
            case Trick::Cookies:
                randombytes_buf(cookie.cookie.data(), cookie.cookie.size());
                return send(cookie, from);
            case Trick::Flood:
                m_target = from;
                return;
            case Trick::WrongPassword:
                return send(LoginRefused{hello.token, AV_ER_WRONG_VIEWACCorPWD}, from);
            case Trick::OtherVersion:
                return send(LoginRefused{hello.token, LINK_ER_VERSION}, from);
            case Trick::Full:
                return send(LoginRefused{hello.token, AV_ER_NO_PERMISSION}, from);
        }
    }

    void answerProof(const LoginProof& proof, const sockaddr_in&) {
        ++m_proofs;
        if (m_trick != Trick::Stall)
            send(LoginReady{proof.token, 0, proof.tag}, m_login);
    }

    // The handshake of version 4 of the transport, which knows neither extensions nor keys.
    void shakeHands(const uint8_t* data, size_t size, const sockaddr_in& from) {
        if (size < 64 || data[0] != 0x80 || data[1] != 0)
            return;
        ++m_handshakes;
        Bytes answer(data, data + 64);
        std::copy_n(data + 40, 4, answer.begin() + 12);  // to the socket that asks
        const bool isInduction = data[39] == 1;
        answer[19] = 4;
        answer[40] = 0x12;  // a socket of ours
        m_socket.send(answer.data(), answer.size(), from);
        if (!isInduction)
            sendPicture(answer, from);
    }

    void sendPicture(const Bytes& handshake, const sockaddr_in& to) {
        FrameFragment picture;
        static const Bytes bytes(100, 0x66);
        picture.count = 1;
        picture.totalBytes = 100;
        picture.data = bytes.data();
        picture.size = bytes.size();
        picture.info[2] = 1;
        const EncodedMessage message = encodeMessage(picture);
        Bytes packet(16 + message.size, 0);
        std::copy_n(handshake.begin() + 24, 4, packet.begin());  // the first number
        packet[4] = 0xE0;                                        // whole, in order
        packet[7] = 1;
        std::copy_n(handshake.begin() + 12, 4, packet.begin() + 12);
        std::copy_n(message.bytes.data(), message.size, packet.begin() + 16);
        m_socket.send(packet.data(), packet.size(), to);
    }

    void send(const LoginMessage& message, const sockaddr_in& to) {
        const Bytes bytes = encodeLogin(message);
        m_socket.send(bytes.data(), bytes.size(), to);
    }

    const Trick m_trick;
    const int m_answers;
    std::atomic<bool> m_isReady{false}, m_isStopped{false};
    std::atomic<int> m_searches{0}, m_hellos{0}, m_proofs{0}, m_handshakes{0};

    // Owned by the rogue's thread.
    DatagramSocket m_socket;
    sockaddr_in m_login{};
    sockaddr_in m_target{};
    std::thread m_thread;  ///< uses the above
};

/// A camera that does not hear the search and answers slowly, so that rogues come first.
class FarCamera {
public:
    FarCamera() : m_camera(makeDeaf()), m_relay(m_camera->server().port()) {
        RelayPath path;
        path.delayMs = 60;
        m_relay.setBothPaths(path);
    }

    TestCamera& camera() { return *m_camera; }
    uint16_t port() const { return m_relay.port(); }

private:
    static std::unique_ptr<TestCamera> makeDeaf() {
        const QByteArray port = qgetenv("ORVELLE_DISCOVERY_PORT");
        qputenv("ORVELLE_DISCOVERY_PORT", QByteArray::number(port.toInt() + 10'000));
        auto camera = std::make_unique<TestCamera>();
        qputenv("ORVELLE_DISCOVERY_PORT", port);
        return camera;
    }

    std::unique_ptr<TestCamera> m_camera;
    UdpRelay m_relay;
};

}  // namespace

/// Others in a camera's place, and others in a client's.
class RogueTest : public LinkSuite {
    Q_OBJECT

private slots:
    void realCamera_isFound_amongRogues_data();
    void realCamera_isFound_amongRogues();
    void rogueAlone_isNoCamera_data();
    void rogueAlone_isNoCamera();
    void opening_isRefused_whenItDoesNotFit_data();
    void opening_isRefused_whenItDoesNotFit();
    void clientOfVersionOne_isToldSo();
    void cameraOfVersionOne_isToldApart_data();
    void cameraOfVersionOne_isToldApart();
};

void RogueTest::realCamera_isFound_amongRogues_data() {
    QTest::addColumn<int>("trick");
    QTest::addColumn<int>("rogues");
    QTest::addColumn<int>("answers");
    const auto row = [](const char* name, Trick trick, int rogues = 1, int answers = 1) {
        QTest::newRow(name) << int(trick) << rogues << answers;
    };
    row("silent", Trick::Silence);
    row("transport without login", Trick::Transport);
    row("wrong tag", Trick::Ready);
    row("echo", Trick::Echo);
    row("stalling", Trick::Stall);
    row("cookie after cookie", Trick::Cookies);
    row("noise", Trick::Flood, 2);
    row("refusing", Trick::WrongPassword);
    row("of another version", Trick::OtherVersion);
    row("full", Trick::Full);
    row("thirty silent", Trick::Silence, 30);
    row("thirty stalling", Trick::Stall, 30);
    row("thirty full", Trick::Full, 30);
    row("hundreds of answers", Trick::Silence, 1, 400);
}

void RogueTest::realCamera_isFound_amongRogues() {
    QFETCH(int, trick);
    QFETCH(int, rogues);
    QFETCH(int, answers);
    FarCamera real;
    std::vector<std::unique_ptr<Rogue>> others;
    for (int i = 0; i < rogues; ++i)
        others.push_back(std::make_unique<Rogue>(Trick(trick), i, answers));
    const AddressOverride address(kUid, real.port());
    TestClient client;
    QCOMPARE(client.find(), client.sid());
    LinkSessionInfo info;
    QCOMPARE(IOTC_Session_Check(client.sid(), &info), 0);
    QVERIFY(QByteArray(info.remoteAddress) != "127.0.0.1");  // a rogue was first
    QElapsedTimer timer;
    timer.start();
    QVERIFY(client.logIn() >= 0);
    // Thirty who stall took 10 s once; 1.5 s of these are due to the delays.
    const qint64 tookMs = timer.elapsed();
    QVERIFY2(tookMs < 6000, qPrintable(QString::number(tookMs)));
    QCOMPARE(IOTC_Session_Check(client.sid(), &info), 0);
    QCOMPARE(QByteArray(info.remoteAddress), QByteArray("127.0.0.1"));
    QCOMPARE(avSendIOCtrl(client.av(), 7, "x", 1), 0);
    QTRY_COMPARE(real.camera().controls(), QVector<QByteArray>{"7:x"});
    QCOMPARE(pictureAcross(real.camera(), real.camera().lastClient(), client, kPictureBytes),
             kPictureBytes);
    for (const auto& other : others) {
        QVERIFY(other->searches() > 0);
        QCOMPARE(other->handshakes(), 0);
        QVERIFY2(other->hellos() < 50, qPrintable(QString::number(other->hellos())));
    }
}

void RogueTest::rogueAlone_isNoCamera_data() {
    QTest::addColumn<int>("trick");
    QTest::addColumn<int>("result");
    QTest::newRow("silent") << int(Trick::Silence) << int{AV_ER_TIMEOUT};
    QTest::newRow("transport") << int(Trick::Transport) << int{AV_ER_TIMEOUT};
    QTest::newRow("wrong tag") << int(Trick::Ready) << int{AV_ER_TIMEOUT};
    QTest::newRow("echo") << int(Trick::Echo) << int{AV_ER_TIMEOUT};
    QTest::newRow("noise") << int(Trick::Flood) << int{AV_ER_TIMEOUT};
    QTest::newRow("cookies") << int(Trick::Cookies) << int{AV_ER_TIMEOUT};
    QTest::newRow("refusing") << int(Trick::WrongPassword) << int{AV_ER_WRONG_VIEWACCorPWD};
    QTest::newRow("other version") << int(Trick::OtherVersion) << int{LINK_ER_VERSION};
    QTest::newRow("full") << int(Trick::Full) << int{AV_ER_NO_PERMISSION};
}

void RogueTest::rogueAlone_isNoCamera() {
    QFETCH(int, trick);
    Rogue rogue(Trick(trick), 0);
    TestClient client;
    QCOMPARE(client.find(), client.sid());
    QTEST(client.logIn(), "result");
    QCOMPARE(rogue.handshakes(), 0);
    QVERIFY(rogue.hellos() > 0 && rogue.hellos() < 50);
    QCOMPARE(rogue.proofs() > 0, Trick(trick) == Trick::Ready || Trick(trick) == Trick::Echo);
}

void RogueTest::opening_isRefused_whenItDoesNotFit_data() {
    QTest::addColumn<QByteArray>("what");
    for (const char* what : {"channel", "purpose", "version", "token", "tag", "nonce", "session"})
        QTest::newRow(what) << QByteArray(what);
}

// Somebody on the client's own port, which the system lets through, but without the session's keys;
// or a client that means something else than its proof says.
void RogueTest::opening_isRefused_whenItDoesNotFit() {
    QFETCH(QByteArray, what);
    TestCamera camera;
    RawClient other(camera.server().port());
    QVERIFY(other.connect());
    QVERIFY(other.hello());
    RawClient client(camera.server().port());
    QVERIFY(client.connect());
    QVERIFY(client.hello());
    QTRY_COMPARE(camera.connected(), 2);
    const auto control = client.takeSealed();
    OpenMessage open = client.makeOpenFor(SocketPurpose::Media, 0);
    if (what == "channel")
        open.channel = 1;
    else if (what == "purpose")
        open.purpose = SocketPurpose::Control;
    else if (what == "version")
        open.version = 1;
    else if (what == "token")
        ++open.token;
    else if (what == "tag")
        open.tag[31] ^= 1;
    else if (what == "nonce")
        open.nonce[0] ^= 1;
    else
        open.token = other.makeOpenFor(SocketPurpose::Media, 0).token;
    QVERIFY(client.connectSocket());
    QCOMPARE(client.open(open), int{AV_ER_TIMEOUT});
    QTRY_VERIFY(!client.isConnected());
    for (const int channel : {0, 1})
        QVERIFY(!camera.server().isChannelOpen(camera.lastClient(), channel));
    QCOMPARE(camera.server().stats().clients, 2);
}

void RogueTest::clientOfVersionOne_isToldSo() {
    TestCamera camera;
    const SrtLibrary library;
    const SrtSocket caller(srt_create_socket());
    const std::string request =
        "#!::r=" + std::string(kUid) + ",u=admin,m=request,k=control,s=1,c=0,v=1";
    QVERIFY(setSocketText(caller.id(), SRTO_STREAMID, request));
    QVERIFY(setSocketText(caller.id(), SRTO_PASSPHRASE, "0123456789abcdef"));
    const sockaddr_in to = *ipv4Address("127.0.0.1", camera.server().port());
    QCOMPARE(srt_connect(caller.id(), asSockaddr(to), sizeof to), SRT_ERROR);
    QCOMPARE(srt_getrejectreason(caller.id()), 1505);
    QCOMPARE(camera.connected(), 0);
}

void RogueTest::cameraOfVersionOne_isToldApart_data() {
    QTest::addColumn<bool>("isConfigured");
    QTest::newRow("at its address") << true;
    QTest::newRow("by its answer to the search") << false;
}

void RogueTest::cameraOfVersionOne_isToldApart() {
    QFETCH(bool, isConfigured);
    const SrtLibrary library;
    const SrtSocket listener(srt_create_socket());
    const sockaddr_in any = *ipv4Address("127.0.0.1", 0);
    QCOMPARE(srt_bind(listener.id(), asSockaddr(any), sizeof any), 0);
    QCOMPARE(srt_listen(listener.id(), 4), 0);
    std::optional<AddressOverride> address;
    DatagramSocket search;
    std::atomic<bool> isStopped{false};
    std::thread answering;
    if (isConfigured) {
        address.emplace(kUid, localPort(listener.id()));
    } else {
        QVERIFY(search.bindShared(*ipv4Address("127.255.255.255", discoveryPort())));
        answering = std::thread([&] {
            while (!isStopped) {
                uint8_t buffer[kSearchBytes];
                sockaddr_in from{};
                if (!search.waitForDatagram(20) || search.receive(buffer, sizeof buffer, from) < 0)
                    continue;
                const auto query = decodeSearchQuery(buffer, sizeof buffer);
                const auto bytes = encodeSearchAnswer({query->nonce, kUid, 4000, "Old camera", 0});
                search.send(bytes.data(), bytes.size(), from);
            }
        });
    }
    TestClient client;
    const int result = client.find();
    isStopped = true;
    if (answering.joinable())
        answering.join();
    QCOMPARE(result, int{LINK_ER_VERSION});
}

static const RegisterSuite<RogueTest> kRegisterRogue;

}  // namespace orvelle::test

#include "rogue_test.moc"
