#include <QtTest>

#include <random>

#include "link/device_code.h"
#include "link/wire/frame_assembler.h"
#include "support/suites.h"

namespace orvelle::test {

namespace {

FrameFragment fragmentOf(uint32_t number, uint32_t total, uint16_t index) {
    static const std::vector<uint8_t> bytes(kFragmentPayloadBytes);
    FrameFragment fragment;
    fragment.number = number;
    fragment.totalBytes = total;
    fragment.count = fragmentCount(total);
    fragment.index = index;
    fragment.data = bytes.data();
    fragment.size = fragmentBytes(total, index);
    return fragment;
}

constexpr char kSymbols[] = "23456789ABCDEFGHJKMNPQRSTUVWXYZ";

/// Uid and password that a code decodes to, or an empty text.
std::string decodeCode(const std::string& code) {
    char uid[1024] = "", password[1024] = "";
    return GetDeUIDPasswd(code.c_str(), uid, password) == 0 ? std::string(uid) + '|' + password
                                                            : std::string();
}

}  // namespace

/// Bytes on the wire and device codes, well-formed and not.
class WireTest : public QObject {
    Q_OBJECT

private slots:
    void decoder_takesOnlyExactMessages_data();
    void decoder_takesOnlyExactMessages();
    void assembler_givesUpFrame_whenFragmentsDoNotFit();
    void deviceCode_comesBack_asTyped_data();
    void deviceCode_comesBack_asTyped();
    void deviceCode_isNoticed_whenOneCharacterOrSwapIsWrong();
    void deviceCode_isRefused_whenNotOne();
};

void WireTest::decoder_takesOnlyExactMessages_data() {
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<int>("kind");  // index in Message, -1 for refused
    const QByteArray info(32, '0');
    const QByteArray one = "07000000 0100 0000 05000000 02000000" + info;  // 2 bytes, 1 fragment
    const QByteArray full = QByteArray(2 * int(kFragmentPayloadBytes), 'e');
    QTest::newRow("hello") << QByteArray("01010000") << 0;
    QTest::newRow("hello long") << QByteArray("0101000000") << -1;
    QTest::newRow("ping") << QByteArray("0300000001000000") << 2;
    QTest::newRow("bye") << QByteArray("05000000FFFFFFFF") << 4;
    QTest::newRow("unknown kind") << QByteArray("0900000000000000") << -1;
    QTest::newRow("nothing") << QByteArray() << -1;
    QTest::newRow("control") << QByteArray("06000200 80060000 AABB") << 5;
    QTest::newRow("control lies long") << QByteArray("0600FFFF 80060000 AABB") << -1;
    QTest::newRow("control too long")
        << QByteArray("06006D05 80060000") + QByteArray(2 * (kMaxControlBytes + 1), '0') << -1;
    QTest::newRow("frame") << one + "AABB" << 6;
    QTest::newRow("frame short") << one + "AA" << -1;
    QTest::newRow("frame empty") << "07000000 0000 0000 05000000 00000000" + info + "AA" << -1;
    QTest::newRow("frame of 4 GB") << "07000000 FFFF 0000 05000000 FFFFFFFF" + info + full << -1;
    QTest::newRow("video above bound")
        << "07000000 BB00 0000 05000000 01000400" + info + full << -1;
    QTest::newRow("index beyond count")
        << "07000100 0100 0000 05000000 02000000" + info + "AABB" << -1;
    QTest::newRow("count does not fit")
        << "07000000 0200 0000 05000000 02000000" + info + "AABB" << -1;
    QTest::newRow("first of two") << "07000000 0200 0000 05000000 81050000" + info + full << 6;
    QTest::newRow("second of two") << "07000100 0200 0000 05000000 81050000" + info + "AA" << 6;
}

void WireTest::decoder_takesOnlyExactMessages() {
    QFETCH(QByteArray, hex);
    QFETCH(int, kind);
    const QByteArray bytes = QByteArray::fromHex(hex);
    const auto message =
        decodeMessage(reinterpret_cast<const uint8_t*>(bytes.data()), size_t(bytes.size()));
    QCOMPARE(message ? int(message->index()) : -1, kind);
    if (!message)
        return;
    const EncodedMessage again = encodeMessage(*message);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(again.bytes.data()), int(again.size)), bytes);
}

void WireTest::assembler_givesUpFrame_whenFragmentsDoNotFit() {
    using Result = FrameAssembler::Result;
    constexpr uint32_t kTwo = kFragmentPayloadBytes + 1;
    FrameAssembler assembler;
    QVERIFY(assembler.add(fragmentOf(1, kTwo, 1)) == Result::Broken);  // no beginning
    QVERIFY(assembler.add(fragmentOf(2, kTwo, 0)) == Result::Partial);
    QVERIFY(assembler.add(fragmentOf(3, kTwo, 1)) == Result::Broken);  // of another frame
    QVERIFY(assembler.add(fragmentOf(4, kTwo, 0)) == Result::Partial);
    QVERIFY(assembler.add(fragmentOf(4, kTwo + 1, 1)) == Result::Broken);  // another size
    QVERIFY(assembler.add(fragmentOf(5, kTwo, 0)) == Result::Partial);
    QVERIFY(assembler.add(fragmentOf(6, kTwo, 0)) == Result::Broken);  // begins before the end
    QVERIFY(assembler.add(fragmentOf(6, kTwo, 1)) == Result::Complete);
    const LinkFrame frame = assembler.take();
    QCOMPARE(frame.number, 6U);
    QCOMPARE(frame.data.size(), size_t{kTwo});
    QVERIFY(assembler.add(fragmentOf(7, kTwo, 1)) == Result::Broken);
}

void WireTest::deviceCode_comesBack_asTyped_data() {
    QTest::addColumn<QByteArray>("uid");
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<int>("mostCharacters");
    QTest::newRow("usual") << QByteArray("ABCDEFGHIJ0123456789") << QByteArray("k7Pw93xz") << 36;
    QTest::newRow("shortest") << QByteArray("0") << QByteArray("0") << 6;
    QTest::newRow("digits") << QByteArray("00000000000000000000") << QByteArray("0000") << 26;
    QTest::newRow("mixed case") << QByteArray("aZ09aZ09aZ09aZ09aZ09") << QByteArray("aB c-D") << 38;
    QTest::newRow("utf-8") << QByteArray("CAM1")
                           << QByteArray(
                                  "\xE5\xAF\x86\xE7\xA0\x81 \xF0\x9F"
                                  "\x94\x91")
                           << 30;
    QTest::newRow("longest") << QByteArray("zzzzzzzzzzzzzzzzzzzz") << QByteArray(32, '\xFF') << 82;
}

void WireTest::deviceCode_comesBack_asTyped() {
    QFETCH(QByteArray, uid);
    QFETCH(QByteArray, password);
    QFETCH(int, mostCharacters);
    const std::string code = encodeDeviceCode(uid.toStdString(), password.toStdString());
    const std::string expected = uid.toStdString() + '|' + password.toStdString();
    const QByteArray typed = QByteArray::fromStdString(code);
    QVERIFY(!typed.contains('O') && !typed.contains('0') && !typed.contains('I') &&
            !typed.contains('1') && !typed.contains('L'));
    QVERIFY2(QByteArray(typed).replace('-', "").size() <= mostCharacters, typed);
    for (int i = typed.size() - 6; i >= 0; i -= 6)
        QCOMPARE(typed[i], '-');
    QCOMPARE(decodeCode(code), expected);
    QCOMPARE(decodeCode(typed.toLower().toStdString()), expected);
    QCOMPARE(decodeCode(' ' + QByteArray(typed).replace('-', " ").toStdString() + "\t\n"),
             expected);
}

void WireTest::deviceCode_isNoticed_whenOneCharacterOrSwapIsWrong() {
    int tried = 0;
    for (const char* password : {"0", "k7Pw93xz", "a rather long password, 32 bytes"}) {
        std::string code = encodeDeviceCode("ABCDEFGHIJ0123456789", password);
        code.erase(std::remove(code.begin(), code.end(), '-'), code.end());
        for (size_t at = 0; at < code.size(); ++at) {
            for (const char symbol : std::string(kSymbols)) {
                std::string wrong = code;
                wrong[at] = symbol;
                QVERIFY2(wrong == code || decodeCode(wrong).empty(), wrong.c_str());
                ++tried;
            }
            std::string swapped = code;
            if (at > 0)
                std::swap(swapped[at - 1], swapped[at]);
            QVERIFY2(swapped == code || decodeCode(swapped).empty(), swapped.c_str());
        }
    }
    QVERIFY(tried > 3000);
}

void WireTest::deviceCode_isRefused_whenNotOne() {
    const std::string good = encodeDeviceCode("CAMERA1", "secret");
    for (const std::string& code :
         {std::string(), std::string("-"), std::string("22"), std::string("22222"), "2" + good,
          good + good, good + "O", good + "\xC3\xA9", std::string(5000, 'A')})
        QCOMPARE(decodeCode(code), std::string());
    std::mt19937 random(1);
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string code;
        for (unsigned j = 0; j < random() % 100; ++j)
            code += kSymbols[random() % 31];
        accepted += !decodeCode(code).empty();
    }
    QVERIFY(accepted < 20);
    QCOMPARE(encodeDeviceCode("A-B", "x"), std::string());
    QCOMPARE(encodeDeviceCode(std::string(21, 'A'), "x"), std::string());
    QCOMPARE(encodeDeviceCode("A", ""), std::string());
    QCOMPARE(encodeDeviceCode("A", std::string(33, 'x')), std::string());
}

static const RegisterSuite<WireTest> kRegisterWire;

}  // namespace orvelle::test

#include "wire_test.moc"
