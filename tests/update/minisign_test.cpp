#include "update/minisign.h"

#include "support/suites.h"
#include "update/signer.h"

using orvelle::FileSums;
using orvelle::MinisignKey;
using orvelle::MinisignSignature;
using orvelle::test::Signer;

namespace {

// Made with minisign 0.11; the file is "Orvelle\n".
const QByteArray kFile = "Orvelle\n";
const QByteArray kName = "WINversion.xml";
const QByteArray kKey = "RWSewEjYErK6tINk+dicUTzMAOW6jjwsusQVumNO3mfi9bzNMv47HVPi";
const QByteArray kFirstLine = "untrusted comment: signature from minisign secret key\n";
const QByteArray kOfSum =
    "RUSewEjYErK6tDm4kz7THmZl5Qphr23yAJTu8k4cS8OakTMYUbr/3mVlxGPIBX7r6/0rJeT+ZYYDq84fZsfr"
    "JdusJixWcJpN2w0=\n";
const QByteArray kReal =
    kFirstLine + kOfSum +
    "trusted comment: timestamp:1795641004\tfile:WINversion.xml\thashed\n"
    "1eYsdel9rWZ2N/EEhQLRXefcmPLx+Looztj2QIlUUH2dN4hKygTnco0S9FRg4Jafh4a4P/T4No1CFt9/Od5XCw==\n";
// The same with -t 'file:Orvelle-1.1.7.exe'.
const QByteArray kOfOtherName =
    kFirstLine + kOfSum +
    "trusted comment: file:Orvelle-1.1.7.exe\n"
    "ogQm+RM8FEqbZmOEuhf512S/GcJ1pxKlcJ7+4xtn0xYBcF7NNL+A9Z+Fyj1C/exi9vdIFGShqQnlL8pwWiTPBg==\n";
// The same with -l, over the file itself.
const QByteArray kLegacy =
    kFirstLine +
    "RWSewEjYErK6tFw93DwZBh9T++jbbB9AWujmLvwJSW3R4CLubBL/qTmk7kFk/i/vHVwxTs8x21zaIUZzeHxW"
    "MNeHKrYc5kgQpgQ=\ntrusted comment: timestamp:1795641004\tfile:WINversion.xml\n"
    "wlQHtYN8py/gPg59F6G1gGhK8Cd15vlJOamF6+jP1grU6LBB/wgNEv4GIWBZAU7JHyO7HQdVYMKi3NSKut0RBw==\n";

bool passes(const QByteArray& signatureFile, const QByteArray& name = kName,
            const QByteArray& content = kFile, const QByteArray& key = kKey) {
    FileSums sums;
    sums.add(content.left(3));
    sums.add(content.mid(3));
    const auto signature = MinisignSignature::parse(signatureFile);
    const auto trusted = MinisignKey::fromBase64(key);
    return signature && trusted && signature->isOf(name, sums.blake2b(), *trusted);
}

}  // namespace

class MinisignTest : public QObject {
    Q_OBJECT

private slots:
    void realSignature_passes_forItsFileAndNameOnly() {
        QVERIFY(passes(kReal));
        QVERIFY(passes(QByteArray(kReal).replace("\n", "\r\n")));
        QVERIFY(passes(kOfOtherName, "Orvelle-1.1.7.exe"));
        QVERIFY(!passes(kOfOtherName));
        QVERIFY(!passes(kReal, "Orvelle-1.1.7.exe"));
        QVERIFY(!passes(kReal, ""));
        QVERIFY(!passes(kReal, kName, "Orvelle"));
        QVERIFY(!passes(kReal, kName, kFile, Signer().publicKey()));
        QVERIFY(!MinisignSignature::parse(kLegacy));
    }

    void everyOtherByte_isRefused() {
        // Only the first line is nobody's word.
        for (int at = kFirstLine.size(); at < kReal.size() - 1; ++at) {
            for (const char flip : {'\x01', '\x20', '\x80'}) {
                QByteArray bent = kReal;
                bent[at] = static_cast<char>(bent[at] ^ flip);
                QVERIFY2(!passes(bent), bent);
            }
        }
        for (int size = 0; size < kReal.size() - 1; ++size)
            QVERIFY2(!MinisignSignature::parse(kReal.left(size)), kReal.left(size));
    }

    void oddFile_isNoSignature() {
        const QByteArray endless(1 << 20, 't');
        const auto with = [](const QByteArray& before, const QByteArray& after) {
            return QByteArray(kReal).replace(before, after);
        };
        const QByteArrayList files = {kReal + "\n",
                                      kReal + "more\n",
                                      "\n" + kReal,
                                      with("timestamp", endless),
                                      QByteArray(1 << 20, '\n'),
                                      with("==\n", "=\n"),
                                      with("==\n", "===\n"),
                                      with("\n", "\r"),
                                      with(kOfSum, "RUSe\n"),
                                      with("\thashed", QByteArray("\0", 1))};
        for (const QByteArray& odd : files)
            QVERIFY2(!MinisignSignature::parse(odd), odd.left(300));
    }

    void comment_namesOneFile_ofTheKeyWithTheNumber() {
        const Signer signer;
        const std::pair<const char*, bool> cases[] = {
            {"file:a", true},          {"timestamp:1\tfile:a\thashed", true},
            {"file:a\tfile:b", false}, {"file:b\tfile:a", false},
            {"file:a ", false},        {"profile:a", false},
            {"file:aa", false},        {"file:", false},
            {"file:a\tfile:a", false}, {"", false}};
        for (const auto& [comment, isRight] : cases)
            QCOMPARE(passes(signer.sign("x", comment), "a", "x", signer.publicKey()), isRight);
        // The right key under another number is another key.
        QByteArray key = QByteArray::fromBase64(signer.publicKey());
        key[5] = static_cast<char>(key[5] ^ 1);
        QVERIFY(!passes(signer.sign("x", "file:a"), "a", "x", key.toBase64()));
        const QByteArrayList odd = {"",          kKey.left(55),    kKey + "A", "AB" + kKey.mid(2),
                                    kKey + "\n", "*" + kKey.mid(1)};
        for (const QByteArray& each : odd)
            QVERIFY2(!MinisignKey::fromBase64(each), each);
    }
};

static const orvelle::test::RegisterSuite<MinisignTest> kMinisignTest;
#include "minisign_test.moc"
