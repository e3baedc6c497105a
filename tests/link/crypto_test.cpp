#include <QtTest>

#include "link/crypto/sealing.h"
#include "link/wire/login.h"
#include "link/wire/socket_opening.h"
#include "support/suites.h"

namespace orvelle::test {

namespace {

Bytes hex(const char* text) {
    const QByteArray bytes = QByteArray::fromHex(text);
    return Bytes(bytes.begin(), bytes.end());
}

Bytes text(const char* characters) {
    return Bytes(characters, characters + qstrlen(characters));
}

template <class Array>
QByteArray shown(const Array& array) {
    return QByteArray(reinterpret_cast<const char*>(array.data()), int(array.size())).toHex();
}

SecretBytes<32> secretOf(const char* text) {
    SecretBytes<32> secret;
    const Bytes bytes = hex(text);
    std::copy(bytes.begin(), bytes.end(), secret.data());
    return secret;
}

EncodedMessage messageOf(uint32_t token) {
    return encodeMessage(PingMessage{token});
}

}  // namespace

/// The exchange against published values, the seal, and what each end must refuse.
class CryptoTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(startCrypto()); }
    void exchange_givesPublishedValues();
    void exchange_refusesShares_thatAreNoElements_data();
    void exchange_refusesShares_thatAreNoElements();
    void exchange_agrees_onlyWhenAllIsAlike_data();
    void exchange_agrees_onlyWhenAllIsAlike();
    void seal_opensOnly_whatComesNext();
    void opening_isAuthentic_onlyAsItWasMade();
};

void CryptoTest::exchange_givesPublishedValues() {
    const Bytes context = withLengths({text("A_initiator"), text("B_responder")});
    QCOMPARE(shown(context), QByteArray("0b415f696e69746961746f720b425f726573706f6e646572"));
    const CpaceGenerator generator("Password", context, hex("7e4b4791d6a8ef019b936c79fb7f2c57"));
    QCOMPARE(shown(generator.element()),
             QByteArray("222b6b195fe84b1652badb6f6a3ae3d24341e7306967f0b8115b40d5698c7e56"));
    const CpaceExchange a(
        CpaceExchange::Role::Initiator, generator,
        secretOf("da3d23700a9e5699258aef94dc060dfda5ebb61f02a5ea77fad53f4ff0976d08"));
    const CpaceExchange b(
        CpaceExchange::Role::Responder, generator,
        secretOf("d2316b454718c35362d83d69df6320f38578ed5984651435e2949762d900b80d"));
    QCOMPARE(shown(a.share()),
             QByteArray("d6bac480f2c386c394efc7c47adb9925dcd2630b64f240c50f8d0eec482b9157"));
    QCOMPARE(shown(b.share()),
             QByteArray("3ea7e0b19560d7c0b0f5734f63b955286dfa8232b5ebe63324e2d9e7433f7258"));
    const QByteArray key =
        "b69effbf61b51d56401c0f65601abe428de8206feaaf0e32198896dcae7b35cd"
        "2b38950a39dfd5d4a79164614c2984f7daa460b588c1e80c3fa2068af7900447";
    const auto keyOfA = a.agree(text("ADa"), {b.share(), text("ADb")});
    const auto keyOfB = b.agree(text("ADb"), {a.share(), text("ADa")});
    QVERIFY(keyOfA && keyOfB);
    QCOMPARE(shown(*keyOfA), key);
    QCOMPARE(shown(*keyOfB), key);
}

void CryptoTest::exchange_refusesShares_thatAreNoElements_data() {
    QTest::addColumn<int>("filling");
    QTest::newRow("identity") << 0x00;
    QTest::newRow("no encoding") << 0xFF;
}

void CryptoTest::exchange_refusesShares_thatAreNoElements() {
    QFETCH(int, filling);
    const CpaceExchange own(CpaceExchange::Role::Responder, CpaceGenerator("Password", {}));
    CpaceMessage other;
    other.share.fill(uint8_t(filling));
    QVERIFY(!own.agree({}, other));
}

void CryptoTest::exchange_agrees_onlyWhenAllIsAlike_data() {
    QTest::addColumn<QString>("changed");
    for (const char* field : {"", "password", "uid", "account", "token", "nonce of the client",
                              "nonce of the camera", "share"})
        QTest::newRow(*field ? field : "nothing") << QString::fromLatin1(field);
}

// The camera sees one thing differently from how the client meant it.
void CryptoTest::exchange_agrees_onlyWhenAllIsAlike() {
    QFETCH(QString, changed);
    const auto is = [&changed](const char* field) { return changed == QLatin1String(field); };
    LoginHello hello;
    hello.uid = "CAMERA1";
    hello.account = "admin";
    LoginWelcome welcome;
    const CpaceExchange client(CpaceExchange::Role::Initiator,
                               {"password", loginContext(hello.uid, hello.account)});
    hello.share = client.share();

    LoginHello heard = hello;
    if (is("uid"))
        heard.uid = "CAMERA2";
    if (is("account"))
        heard.account = "root";
    if (is("token"))
        heard.token = 1;
    if (is("nonce of the client"))
        heard.nonce[31] = 1;
    if (is("share"))
        heard.share = welcome.share =
            CpaceExchange(CpaceExchange::Role::Initiator, CpaceGenerator("x", {})).share();
    const CpaceExchange camera(
        CpaceExchange::Role::Responder,
        {is("password") ? "Password" : "password", loginContext(heard.uid, heard.account)});
    welcome.share = camera.share();
    LoginWelcome heardWelcome = welcome;
    if (is("nonce of the camera"))
        heardWelcome.nonce[0] = 1;

    const auto clientKey =
        client.agree(associatedData(hello), {heardWelcome.share, associatedData(heardWelcome)});
    const auto cameraKey =
        camera.agree(associatedData(welcome), {heard.share, associatedData(heard)});
    QVERIFY(clientKey && cameraKey);
    LoginProof proof;
    sign(proof, LoginKeys(*clientKey));
    QCOMPARE(isAuthentic(proof, LoginKeys(*cameraKey)), changed.isEmpty());
    LoginReady ready;
    sign(ready, LoginKeys(*cameraKey));
    QCOMPARE(isAuthentic(ready, LoginKeys(*clientKey)), changed.isEmpty());
}

void CryptoTest::seal_opensOnly_whatComesNext() {
    const SecretKey key = secretOf(QByteArray(64, 'a').constData());
    Sealer sealer(key);
    const SealedMessage first = sealer.seal(messageOf(1));
    sealer.advance();
    const SealedMessage second = sealer.seal(messageOf(2));
    EncodedMessage opened;
    {
        Opener opener(key);
        QVERIFY(opener.open(first.bytes.data(), first.size, &opened));
        QCOMPARE(opened.size, messageOf(1).size);
        QVERIFY(opener.open(second.bytes.data(), second.size, &opened));
        QVERIFY(!opener.open(second.bytes.data(), second.size, &opened));  // repeated
    }
    QVERIFY(!Opener(key).open(second.bytes.data(), second.size, &opened));  // one was left out
    QVERIFY(!Opener(SecretKey()).open(first.bytes.data(), first.size, &opened));
    for (size_t size = 0; size < first.size; ++size)
        QVERIFY(!Opener(key).open(first.bytes.data(), size, &opened));
    for (size_t bit = 0; bit < first.size * 8; ++bit) {
        SealedMessage changed = first;
        changed.bytes[bit / 8] ^= uint8_t(1 << bit % 8);
        Opener opener(key);
        QVERIFY(!opener.open(changed.bytes.data(), changed.size, &opened));
        QVERIFY(!opener.open(first.bytes.data(), first.size, &opened));  // it is broken for good
    }
}

void CryptoTest::opening_isAuthentic_onlyAsItWasMade() {
    const SecretKey secret = secretOf(QByteArray(64, 'b').constData());
    const OpenMessage open = makeOpen(SocketPurpose::Media, 3, 77, secret);
    const OpenedMessage opened = makeOpened(open, 0, secret);
    QVERIFY(isAuthentic(open, secret) && isAuthentic(opened, open, secret));
    QVERIFY(!isAuthentic(open, SecretKey()) && !isAuthentic(opened, open, SecretKey()));
    // An answer belongs to one question, and one question gives no keys twice.
    const OpenMessage again = makeOpen(SocketPurpose::Media, 3, 77, secret);
    QVERIFY(!isAuthentic(opened, again, secret));
    const auto keyText = [&secret](const OpenMessage& request, const OpenedMessage& answer) {
        return shown(socketKeys(secret, request, answer).toClient);
    };
    QVERIFY(keyText(open, opened) != keyText(open, makeOpened(open, 0, secret)));
    QVERIFY(keyText(open, opened) != shown(socketKeys(secret, open, opened).toCamera));

    const Bytes bytes = encodeOpen(open);
    for (size_t i = 0; i < bytes.size(); ++i) {
        Bytes changed = bytes;
        changed[i] ^= 2;
        const auto decoded = decodeOpen(changed.data(), changed.size());
        const bool isReserved = i >= 4 && i < 8;
        QVERIFY2(isReserved || !decoded || !isAuthentic(*decoded, secret),
                 qPrintable(QString::number(i)));
    }
}

static const RegisterSuite<CryptoTest> kRegisterCrypto;

}  // namespace orvelle::test

#include "crypto_test.moc"
