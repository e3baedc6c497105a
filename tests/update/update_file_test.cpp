#include <QSignalSpy>

#include "core/language.h"
#include "device/test_tools.h"
#include "support/suites.h"
#include "update/installer.h"
#include "update/signer.h"
#include "update/update_info.h"
#include "update/update_server.h"
#include "update/updater.h"
#include "update/version_number.h"
#include "update/web_request.h"

using orvelle::test::elsewhere;
using orvelle::test::Signer;
using orvelle::test::wasAsked;
using orvelle::test::WebServer;

namespace {

const QByteArray kGood =
    "<?xml version=\"1.0\"?><u a='1'><version>1.1.7</version><description>D"
    "</description><description_en>e</description_en><description_ch>c\\r\\n"
    "</description_ch><path>https://x.test/a.exe</path></u>";

// Each entity is ten times the one before.
QByteArray entityBomb() {
    QByteArray xml = "<!DOCTYPE u [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 10; ++i) {
        const QByteArray before = "&a" + QByteArray::number(i - 1) + ";";
        xml += "<!ENTITY a" + QByteArray::number(i) + " \"" + before.repeated(10) + "\">";
    }
    return xml + "]><u><version>&a9;</version></u>";
}

QString key(const char* name) {
    return QLatin1String(name);
}

}  // namespace

class UpdateFileTest : public QObject {
    Q_OBJECT

private slots:
    void version_isOffered_whenItsNumberIsHigher() {
        const std::pair<const char*, int> cases[] = {{"1.1.6", 116},   {"1.1.7", 117},
                                                     {"1.2", 120},     {"2", 200},
                                                     {"1.0.9", 109},   {" 1.1.7-beta", 117},
                                                     {"1.1.7.9", 117}, {"1.1.10", 120},
                                                     {"1..9", 100},    {"99999999999", 99'999'900},
                                                     {"", 0},          {"v2", 0},
                                                     {"-2", 0}};
        for (const auto& [version, number] : cases) {
            QCOMPARE(orvelle::versionNumber(key(version)), number);
            QCOMPARE(orvelle::isNewerVersion(key(version), key("1.1.6")), number >= 117);
        }
    }

    void notes_areThoseOfTheLanguage_orAny() {
        for (const auto& [language, own] : {std::pair{"chinese", "c\r\n"}, {"english", "e"}}) {
            KvLanguage::load(key(language));
            KvUpdateInfo info;
            QVERIFY(info.read(kGood));
            QCOMPARE(info.notes(), key(own));
            info.setValue({}, key(*own == 'c' ? "description_ch" : "description_en"));
            QCOMPARE(info.notes(), key("D"));
        }
    }

    void file_isReadOrRefused() {
        const std::pair<QByteArray, const char*> good[] = {
            {kGood, "1.1.7"},
            {"<u><version>1<b>9</b>.2</version></u>", "1.2"},
            {"<u><version>1</version><version>2</version></u>", "2"},
            {"<!DOCTYPE u [<!ENTITY f SYSTEM \"/etc/hostname\">]><u><version>&f;</version></u>",
             ""}};
        KvUpdateInfo info;
        for (const auto& [xml, version] : good) {
            QVERIFY2(info.read(xml), xml);
            QCOMPARE(info.value(key("version")), key(version));
        }
        for (const QByteArray& bad :
             {QByteArray(), QByteArray("<u/>"), QByteArray("<html><body><br></body></html>"),
              kGood.left(80), QByteArray(kGood).append("<more/>"), entityBomb(),
              QByteArray("<u><version>\xff\xfe</version></u>"), QByteArray("\0\1\2<u>", 6)}) {
            QVERIFY2(!info.read(bad), bad);
            QVERIFY(info.value(key("version")).isEmpty());
        }
    }

    void olderVersion_isNeverNewer_whateverItsNumber() {
        QVERIFY(orvelle::versionNumber(key("1.0.20")) > orvelle::versionNumber(key("1.1.6")));
        for (const char* older : {"1.0.20", "0.99.99", "1.1.5", "1.1.6", "1.1", "0.0.999"})
            QVERIFY2(!orvelle::isNewerVersion(key(older), key("1.1.6")), older);
    }

    void installerName_isPlainOrRefused() {
        KvUpdateInfo info;
        fill(info);
        QCOMPARE(nameOf(info), key("117.exe"));
        info.setValue(key(" set up "), key("name"));
        for (const char* bad : {"exe/../../b", "e:x", ".", " ", "e\\x"}) {
            info.setValue(key(bad), key("type"));
            QVERIFY2(nameOf(info).isEmpty(), bad);
        }
        info.setValue(key("tar.gz"), key("type"));
        QCOMPARE(nameOf(info), key("set up.tar.gz"));
        const QByteArray tooLong(250, 'a');
        for (const char* bad : {"../a", "..", "a..b", "a/b", "a\\b", "C:a", ".a", "a\nb", "a\x7f",
                                "a\xE2\x80\xAEgpj", "NUL", "com1.x", "  ", "a|b", tooLong.data()}) {
            info.setValue(QString::fromUtf8(bad), key("name"));
            QVERIFY2(nameOf(info).isEmpty(), bad);
        }
    }

    void address_isSafeOrRefused() {
        const QByteArray anyKey = Signer().publicKey();
        KvUpdateInfo info;
        fill(info);
        // Whether it may be downloaded as a server over https says it, and a test server.
        const std::tuple<const char*, bool, bool> cases[] = {
            {"https://x.test/a.exe", true, true},
            {"https://x.test:8443/b/a.exe?c=d", true, true},
            {"http://127.0.0.1:80/a.exe", false, true},
            {"http://[::1]/a.exe", false, true},
            {"http://localhost/a.exe", false, true},
            {"http://x.test/a.exe", false, false},
            {"http://localhost.x.test/a.exe", false, false},
            {"http://127.0.0.1.x.test/a.exe", false, false},
            {"http://127.0.0.1@x.test/a.exe", false, false},
            {"http://192.168.0.1/a.exe", false, false},
            {"http://0.0.0.0/a.exe", false, false},
            {"https://x.test/", false, false},
            {"https:///a.exe", false, false},
            {"", false, false},
            {"file:///etc/passwd", false, false},
            {"ftp://x/y", false, false},
            {"x.exe", false, false},
            {"//x.test/a.exe", false, false},
            {"http://", false, false}};
        for (const auto& [address, fromHttps, fromTests] : cases) {
            info.setValue(key(address), key("path"));
            orvelle::setUpdateServer(key("https://x.test"), anyKey);
            QVERIFY2(orvelle::installerOf(info).has_value() == fromHttps, address);
            orvelle::setUpdateServer(key("http://localhost"), anyKey);
            QVERIFY2(orvelle::installerOf(info).has_value() == fromTests, address);
        }
    }

    void signature_isBesideItsFile() {
        QCOMPARE(orvelle::signatureAddress(QUrl(key("https://x.test/a%20b%25c.exe?d=e"))),
                 QUrl(key("https://x.test/a%20b%25c.exe.minisig?d=e")));
    }

    void sum_isCompulsory() {
        KvUpdateInfo info;
        fill(info);
        const QString sum(64, QLatin1Char('A'));
        for (const QString& each : QStringList{key(""), sum.left(63), sum.left(62), sum.repeated(2),
                                               sum.left(62).append(key("xA"))}) {
            info.setValue(each, key("sha256"));
            QVERIFY(!orvelle::installerOf(info));
        }
        info.setValue(key("\n") + sum, key("sha256"));
        QCOMPARE(orvelle::installerOf(info)->sha256, QByteArray(32, '\xaa'));
    }

    void check_tellsASignedFile_andIsSilentAboutTheRest() {
        const Signer signer;
        WebServer server;
        orvelle::setUpdateServer(server.address(), signer.publicKey());
        signer.publish(server, "/page", "not XML");
        signer.publish(server, "/huge",
                       "<u><version>9.9.9" + QByteArray(8 << 20, ' ') + "</version></u>");
        server.give("/unsigned", kGood);
        signer.publish(server, "/changed", kGood);
        server.give("/changed", QByteArray(kGood).replace("1.1.7", "1.1.8"));
        server.give("/other", kGood);
        server.give("/other.minisig", signer.sign(kGood, "file:good"));
        server.give("/torn", kGood);
        server.give("/torn.minisig", signer.sign(kGood, "file:torn").chopped(9));
        Signer().publish(server, "/stranger", kGood);
        signer.publish(server, "/afar", kGood);
        server.give("/afar", "302 Found", "Location: " + elsewhere(server) + "/good\r\n", "");
        signer.publish(server, "/good", kGood);
        signer.publish(server, "/moved", kGood);
        server.give("/moved", "302 Found", "Location: /good\r\n" + WebServer::length(0), "");
        KvUpdater updater;
        QSignalSpy told(&updater, &KvUpdater::readUpdateInfo);
        for (const char* path : {"/page", "/huge", "/none", "/unsigned", "/changed", "/other",
                                 "/torn", "/stranger", "/afar"}) {
            server.requests.clear();
            orvelle::test::LogLines log;
            updater.start(server.address(key(path)));
            updater.check(path == QByteArray("/huge"));
            QTRY_VERIFY2(log.contains("update file"), path);
            QCOMPARE(wasAsked(server, "POST /"), path == QByteArray("/huge"));
        }
        KvUpdater unsafe;
        unsafe.start(QString::fromLatin1(elsewhere(server)) + key("/good"));
        server.requests.clear();
        unsafe.check(0);
        updater.start(server.address(key("/moved")));
        updater.check(0);
        QTRY_COMPARE(told.count(), 1);
        QVERIFY(!wasAsked(server, "GET /good.minisig"));
        QCOMPARE(told.first().first().value<KvUpdateInfo*>()->versionNumber(), 117);
    }

private:
    static void fill(KvUpdateInfo& info) {
        info.setValue(key("1.1.7"), key("version"));
        info.setValue(key("https://x.test/a.exe"), key("path"));
        info.setValue(QString(64, QLatin1Char('a')), key("sha256"));
    }
    static QString nameOf(const KvUpdateInfo& info) {
        orvelle::setUpdateServer(key("https://x.test"), Signer().publicKey());
        const auto installer = orvelle::installerOf(info);
        return installer ? installer->fileName : QString();
    }
};

static const orvelle::test::RegisterSuite<UpdateFileTest> kUpdateFileTest;
#include "update_file_test.moc"
