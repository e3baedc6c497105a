#include <QtTest>

#include <list>
#include <set>

#include "link/client/login_exchange.h"
#include "link/result_codes.h"
#include "link/server/attempt_ledger.h"
#include "link/server/login_gate.h"
#include "link/wire/version_one.h"
#include "link_fixture.h"

namespace orvelle::test {

namespace {

using Verdict = AttemptLedger::Verdict;

constexpr uint16_t kLoginPort = 4000;
constexpr uint16_t kSocketPort = 5000;

in_addr host(uint32_t number) {
    in_addr address{};
    address.s_addr = htonl(0x0A000000 + number);
    return address;
}

sockaddr_in address(uint32_t hostNumber, uint16_t port = kLoginPort) {
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_addr = host(hostNumber);
    at.sin_port = htons(port);
    return at;
}

/// A camera's gate with a network and a clock of the test's own.
class Gate : public LoginGate::Host {
public:
    int64_t nowMs = 1'000'000;
    std::set<uint64_t> admitted;  ///< tokens
    int admissions = 0;
    int result = 0;
    std::optional<sockaddr_in> way;  ///< of the way 7

    LoginGate& gate() { return m_gate; }

    /// The answer to one datagram; of no kind when there is none.
    std::optional<LoginMessage> send(const Bytes& bytes, const sockaddr_in& from) {
        const auto answer = m_gate.handle(bytes.data(), bytes.size(), from, nowMs);
        if (!answer)
            return std::nullopt;
        lastAnswer = answer->bytes;
        return decodeLogin(answer->bytes.data(), answer->bytes.size());
    }
    Bytes lastAnswer;

private:
    Admission admit(uint64_t token, const SecretKey&, const sockaddr_in&, uint64_t) override {
        ++admissions;
        if (result == 0)
            admitted.insert(token);
        return {result, 0};
    }
    std::optional<sockaddr_in> peerOf(uint64_t id) const override {
        return id == 7 ? way : std::nullopt;
    }

    LoginGate m_gate{
        kUid, kLinkAccount, {(startCrypto(), kPassword), loginContext(kUid, kLinkAccount)}, *this};
};

/// One client that logs in at it, a message at a time.
class Knocker {
public:
    explicit Knocker(Gate& gate, uint32_t hostNumber = 1, const std::string& password = kPassword,
                     const std::string& account = kLinkAccount, const std::string& uid = kUid)
        : m_gate(gate),
          m_host(hostNumber),
          m_identity(uid, account, password),
          m_exchange(m_identity, address(99), 0) {}

    LoginExchange& exchange() { return m_exchange; }

    /// What is due now, the message from the sockets' port first.
    std::vector<LoginExchange::Outgoing> due() { return m_exchange.due(m_gate.nowMs); }
    /// Sends what is due and takes in the answers, once.
    void step() {
        for (const auto& out : due())
            take(m_gate.send(out.bytes, from(out)));
    }
    sockaddr_in from(const LoginExchange::Outgoing& out) const {
        return address(m_host, out.isFromSocketPort ? kSocketPort : kLoginPort);
    }
    void take(const std::optional<LoginMessage>& answer) {
        if (answer)
            m_exchange.handle(*answer, m_gate.nowMs);
    }
    /// HELLO, COOKIE, HELLO, WELCOME.
    void begin() {
        step();
        step();
    }
    int logIn() {
        begin();
        for (int i = 0; i < 3 && m_exchange.isPending(); ++i)
            step();
        m_exchange.due(m_gate.nowMs + 400);  // a refusal has stood for long enough
        return m_exchange.isPending() ? int{AV_ER_TIMEOUT} : m_exchange.result();
    }

private:
    Gate& m_gate;
    const uint32_t m_host;
    const LoginIdentity m_identity;
    LoginExchange m_exchange;
};

}  // namespace

/// The camera's gate and its budgets, with time and network made by the tests.
class GateTest : public QObject {
    Q_OBJECT

private slots:
    void login_endsWithItsCause_data();
    void login_endsWithItsCause();
    void repeatedMessages_getTheSameAnswers();
    void strayMessages_changeNothing();
    void oldestExchange_goesFirst_whenThereAreTooMany();
    void exchange_expires_whenNotFinished();
    void proof_namesPort_onlyOfItsOwnHost();
    void budget_isOfEachAddress_andOfAll();
    void delay_grows_withWrongPasswords();
    void wrongPasswords_delayTheirAddressOnly();
    void exchangesSideBySide_doNotGetRoundTheDelay();
    void madeUpProof_endsNoRightLogin();
    void refusals_areNeverAnswered();
    void ledger_remembersFewAddresses();
    void log_hasOneLineAMinute();
};

void GateTest::login_endsWithItsCause_data() {
    QTest::addColumn<QByteArray>("uid");
    QTest::addColumn<QByteArray>("account");
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<int>("admission");
    QTest::addColumn<int>("result");
    const auto row = [](const char* name, int result, const QByteArray& password = kPassword,
                        const QByteArray& account = kLinkAccount, const QByteArray& uid = kUid,
                        int admission = 0) {
        QTest::newRow(name) << uid << account << password << admission << result;
    };
    row("right", 0);
    row("password", AV_ER_WRONG_VIEWACCorPWD, "correct horsf");
    row("no password", AV_ER_WRONG_VIEWACCorPWD, "");
    row("account", AV_ER_WRONG_VIEWACCorPWD, kPassword, "root");
    row("uid", LINK_ER_UNKNOWN_UID, kPassword, kLinkAccount, "TESTCAMERA");
    row("full", AV_ER_NO_PERMISSION, kPassword, kLinkAccount, kUid, AV_ER_NO_PERMISSION);
    row("no socket", LINK_ER_REFUSED, kPassword, kLinkAccount, kUid, LINK_ER_NETWORK);
}

void GateTest::login_endsWithItsCause() {
    QFETCH(QByteArray, uid);
    QFETCH(QByteArray, account);
    QFETCH(QByteArray, password);
    QFETCH(int, admission);
    Gate gate;
    gate.result = admission;
    Knocker client(gate, 1, password.toStdString(), account.toStdString(), uid.toStdString());
    QTEST(client.logIn(), "result");
    QCOMPARE(gate.admitted.count(client.exchange().token()),
             client.exchange().result() == 0 ? 1u : 0u);
}

void GateTest::repeatedMessages_getTheSameAnswers() {
    Gate gate;
    Knocker client(gate);
    client.step();  // has the cookie now
    const auto hello = client.due().front();
    const auto welcome = gate.send(hello.bytes, client.from(hello));
    QVERIFY(welcome && std::holds_alternative<LoginWelcome>(*welcome));
    const Bytes firstWelcome = gate.lastAnswer;
    gate.send(hello.bytes, client.from(hello));
    QCOMPARE(gate.lastAnswer, firstWelcome);
    QCOMPARE(gate.gate().exchanges(), size_t{1});

    client.take(welcome);
    const auto proof = client.due().front();
    QVERIFY(proof.isFromSocketPort);
    const auto ready = gate.send(proof.bytes, client.from(proof));
    QVERIFY(ready && std::holds_alternative<LoginReady>(*ready));
    const Bytes firstReady = gate.lastAnswer;
    gate.nowMs += 2000;  // READY was lost, the client asks again
    gate.lastAnswer.clear();
    gate.send(proof.bytes, client.from(proof));
    QCOMPARE(gate.lastAnswer, firstReady);
    QCOMPARE(gate.admissions, 1);
    client.take(ready);
    QCOMPARE(client.exchange().result(), 0);
}

// Somebody who saw the messages of a login, or guesses at them.
void GateTest::strayMessages_changeNothing() {
    Gate gate;
    Knocker client(gate);
    client.step();
    const auto hello = client.due().front();
    const sockaddr_in stranger = address(2);
    const auto cookie = gate.send(hello.bytes, stranger);  // the cookie is another address's
    QVERIFY(cookie && std::holds_alternative<LoginCookie>(*cookie));
    const sockaddr_in otherPort = address(1, kLoginPort + 1);
    const auto again = gate.send(hello.bytes, otherPort);
    QVERIFY(again && std::holds_alternative<LoginCookie>(*again));
    QCOMPARE(gate.gate().exchanges(), size_t{0});

    client.take(gate.send(hello.bytes, client.from(hello)));
    auto changed = std::get<LoginHello>(*decodeLogin(hello.bytes.data(), hello.bytes.size()));
    changed.nonce[0] ^= 1;
    QVERIFY(!gate.send(encodeLogin(changed), client.from(hello)));
    const auto proof = client.due().front();
    QVERIFY(!gate.send(proof.bytes, address(2, kSocketPort)));
    auto unknown = std::get<LoginProof>(*decodeLogin(proof.bytes.data(), proof.bytes.size()));
    ++unknown.token;
    QVERIFY(!gate.send(encodeLogin(unknown), client.from(proof)));
    QCOMPARE(gate.admissions, 0);
    client.take(gate.send(proof.bytes, client.from(proof)));
    QCOMPARE(client.exchange().isPending(), false);
    QCOMPARE(client.exchange().result(), 0);
    QVERIFY(!gate.send(encodeLogin(unknown), client.from(proof)));

    auto forged = std::get<LoginProof>(*decodeLogin(proof.bytes.data(), proof.bytes.size()));
    forged.tag[0] ^= 1;
    QVERIFY(!gate.send(encodeLogin(forged), client.from(proof)));  // READY is for who proves it
}

void GateTest::oldestExchange_goesFirst_whenThereAreTooMany() {
    Gate gate;
    std::vector<std::unique_ptr<Knocker>> clients;
    for (size_t i = 0; i <= LoginGate::kMaxExchanges; ++i) {
        clients.push_back(std::make_unique<Knocker>(gate, uint32_t(i)));
        clients.back()->begin();
        gate.nowMs += 6;  // within the budget of all
    }
    QCOMPARE(gate.gate().exchanges(), LoginGate::kMaxExchanges);
    for (const auto& client : clients)
        client->step();
    QVERIFY(clients[0]->exchange().isPending());
    for (size_t i = 1; i < clients.size(); ++i)
        QCOMPARE(clients[i]->exchange().isPending(), false);
    QCOMPARE(gate.admissions, int(LoginGate::kMaxExchanges));
}

void GateTest::exchange_expires_whenNotFinished() {
    for (const int64_t waitedMs : {2900, 3100}) {
        Gate gate;
        Knocker client(gate);
        client.begin();
        const auto proof = client.due().front();
        gate.nowMs += waitedMs;
        gate.gate().expire(gate.nowMs);
        const bool isLate = waitedMs > 3000;
        QCOMPARE(gate.gate().exchanges(), isLate ? size_t{0} : size_t{1});
        QCOMPARE(bool(gate.send(proof.bytes, client.from(proof))), !isLate);
        QCOMPARE(gate.admissions, isLate ? 0 : 1);
    }
}

// While the camera has its old port open, the proof from there does not arrive, and the way says
// where it is; nobody else's.
void GateTest::proof_namesPort_onlyOfItsOwnHost() {
    for (const uint32_t ownerOfWay : {1u, 2u}) {
        Gate gate;
        gate.way = address(ownerOfWay, kSocketPort);
        const LoginIdentity identity(kUid, kLinkAccount, kPassword);
        LoginExchange exchange(identity, address(99), 7);
        for (int i = 0; i < 3; ++i) {
            for (const auto& out : exchange.due(gate.nowMs)) {
                const auto answer =
                    out.isFromSocketPort ? std::nullopt : gate.send(out.bytes, address(1));
                if (answer)
                    exchange.handle(*answer, gate.nowMs);
            }
        }
        QCOMPARE(exchange.isPending(), ownerOfWay != 1);
        QCOMPARE(gate.admissions, ownerOfWay == 1 ? 1 : 0);
    }
}

void GateTest::budget_isOfEachAddress_andOfAll() {
    AttemptLedger ledger;
    const auto allowed = [&ledger](uint32_t from, int tries, int64_t nowMs) {
        int count = 0;
        for (int i = 0; i < tries; ++i)
            count += ledger.judge(host(from), nowMs) == Verdict::Allowed ? 1 : 0;
        return count;
    };
    QCOMPARE(allowed(1, 1000, 0), 20);
    QCOMPARE(allowed(2, 5, 0), 5);  // what the first wanted beyond its own is still there
    QCOMPARE(allowed(1, 1000, 5000), 10);
    int all = 0;
    for (uint32_t from = 100; from < 150; ++from)
        all += allowed(from, 20, 20'000);
    QCOMPARE(all, 200);
    ledger.noteRightPassword(host(1));
    QCOMPARE(allowed(200, 1, 20'000), 0);
    QCOMPARE(allowed(1, 100, 20'000), 20);
}

void GateTest::delay_grows_withWrongPasswords() {
    AttemptLedger ledger;
    int64_t nowMs = 0;
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(ledger.judge(host(1), nowMs), Verdict::Allowed);
        ledger.noteWrongPassword(host(1), nowMs);
    }
    for (const int64_t delayMs : {1000, 2000, 4000, 8000, 16000, 32000, 60000, 60000}) {
        QCOMPARE(ledger.judge(host(1), nowMs), Verdict::Allowed);
        ledger.noteWrongPassword(host(1), nowMs);
        QCOMPARE(ledger.judge(host(1), nowMs + delayMs - 1), Verdict::Delayed);
        nowMs += delayMs;
    }
    QCOMPARE(ledger.judge(host(1), nowMs), Verdict::Allowed);
    ledger.noteRightPassword(host(1));
    for (int i = 0; i < 4; ++i)
        ledger.noteWrongPassword(host(1), nowMs);
    QCOMPARE(ledger.judge(host(1), nowMs), Verdict::Allowed);
}

void GateTest::wrongPasswords_delayTheirAddressOnly() {
    Gate gate;
    for (int i = 0; i < 5; ++i)
        QCOMPARE(Knocker(gate, 1, "guessed wrong").logIn(), int{AV_ER_WRONG_VIEWACCorPWD});
    QCOMPARE(Knocker(gate, 1, "guessed wrong").logIn(), int{LINK_ER_TOO_MANY_ATTEMPTS});
    QCOMPARE(Knocker(gate, 1).logIn(), int{LINK_ER_TOO_MANY_ATTEMPTS});
    QCOMPARE(Knocker(gate, 2).logIn(), 0);
    gate.nowMs += 1000;
    QCOMPARE(Knocker(gate, 1).logIn(), 0);
}

void GateTest::exchangesSideBySide_doNotGetRoundTheDelay() {
    Gate gate;
    std::list<Knocker> knockers;
    for (int i = 0; i < 5; ++i)
        knockers.emplace_back(gate, 1, "guessed wrong");
    Knocker right(gate, 1);
    right.begin();
    for (Knocker& wrong : knockers)
        QCOMPARE(wrong.logIn(), int{AV_ER_WRONG_VIEWACCorPWD});
    // Not a word about it, or it would tell which of many guesses was the right one.
    QCOMPARE(right.logIn(), int{LINK_ER_TOO_MANY_ATTEMPTS});
    QCOMPARE(gate.admissions, 0);
}

void GateTest::madeUpProof_endsNoRightLogin() {
    Gate gate;
    Knocker client(gate);
    client.begin();
    const auto proof = client.due().front();
    auto madeUp = std::get<LoginProof>(*decodeLogin(proof.bytes.data(), proof.bytes.size()));
    madeUp.tag = {};
    for (int i = 0; i < 20; ++i)  // one exchange counts once
        client.take(gate.send(encodeLogin(madeUp), client.from(proof)));
    client.take(gate.send(proof.bytes, client.from(proof)));
    QVERIFY(!client.exchange().isPending());
    QCOMPARE(client.exchange().result(), 0);
}

// Two cameras would answer each other for ever.
void GateTest::refusals_areNeverAnswered() {
    Gate gate;
    const Bytes call = versionOneProbe();
    const auto refusal = refusalOfVersionOne(call.data(), call.size());
    QVERIFY(refusal && !refusalOfVersionOne(refusal->data(), refusal->size()));
    Bytes fromNobody = call;  // whose refusal would look like a call
    std::fill(fromNobody.begin() + 40, fromNobody.begin() + 44, uint8_t{0});
    QVERIFY(!refusalOfVersionOne(fromNobody.data(), fromNobody.size()));
    Bytes later = encodeLogin(LoginRefused{1, LINK_ER_VERSION});
    later[3] = kProtocolVersion + 1;
    QVERIFY(!gate.send(later, address(1)));
}

void GateTest::ledger_remembersFewAddresses() {
    AttemptLedger ledger;
    for (int i = 0; i < 5; ++i)
        ledger.noteWrongPassword(host(0), 0);
    QCOMPARE(ledger.judge(host(0), 1), Verdict::Delayed);
    for (uint32_t i = 1; i < AttemptLedger::kMaxAddresses; ++i)
        ledger.judge(host(i), 1);
    QCOMPARE(ledger.addresses(), AttemptLedger::kMaxAddresses);
    QCOMPARE(ledger.judge(host(0), 2), Verdict::Delayed);  // heard of last now
    for (uint32_t i = 0; i < 1000; ++i)
        ledger.judge(host(100'000 + i), 2);
    QCOMPARE(ledger.addresses(), AttemptLedger::kMaxAddresses);
    QCOMPARE(ledger.judge(host(0), 3), Verdict::Delayed);
}

void GateTest::log_hasOneLineAMinute() {
    AttemptLedger ledger;
    const auto lines = [&ledger](int64_t nowMs) {
        QStringList all;
        while (const auto line = ledger.nextLogLine(nowMs))
            all << QString::fromStdString(*line);
        all.sort();
        return all;
    };
    QCOMPARE(lines(0), QStringList());
    ledger.noteWrongPassword(host(1), 0);
    ledger.noteWrongPassword(host(1), 0);
    ledger.noteWrongPassword(host(2), 0);
    const QStringList first = lines(1000);
    QCOMPARE(first.size(), 2);
    QVERIFY2(
        first[0].contains(QLatin1String(" 1 ")) && first[0].contains(QLatin1String("10.0.0.2")),
        qPrintable(first[0]));
    QVERIFY2(
        first[1].contains(QLatin1String(" 2 ")) && first[1].contains(QLatin1String("10.0.0.1")),
        qPrintable(first[1]));
    for (int i = 0; i < 100; ++i)
        ledger.noteWrongPassword(host(1), 2000);
    QCOMPARE(lines(60'900), QStringList());
    const QStringList second = lines(61'000);
    QCOMPARE(second.size(), 1);
    QVERIFY2(
        second[0].contains(QLatin1String(" 100 ")) && second[0].contains(QLatin1String("10.0.0.1")),
        qPrintable(second[0]));
    QCOMPARE(lines(200'000), QStringList());
}

static const RegisterSuite<GateTest> kRegisterGate;

}  // namespace orvelle::test

#include "gate_test.moc"
