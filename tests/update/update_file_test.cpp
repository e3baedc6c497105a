#include <QSignalSpy>

#include "core/language.h"
#include "support/suites.h"
#include "update/installer_file.h"
#include "update/update_info.h"
#include "update/updater.h"
#include "update/version_number.h"
#include "web_server.h"

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

    void installerName_isPlainOrRefused() {
        KvUpdateInfo info;
        info.setValue(key("1.1.7"), key("version"));
        QCOMPARE(orvelle::installerFileName(info), key("117.exe"));
        info.setValue(key(" set up "), key("name"));
        for (const char* bad : {"exe/../../b", "e:x", ".", " ", "e\\x"}) {
            info.setValue(key(bad), key("type"));
            QVERIFY2(orvelle::installerFileName(info).isEmpty(), bad);
        }
        info.setValue(key("tar.gz"), key("type"));
        QCOMPARE(orvelle::installerFileName(info), key("set up.tar.gz"));
        const QByteArray tooLong(250, 'a');
        for (const char* bad : {"../a", "..", "a..b", "a/b", "a\\b", "C:a", ".a", "a\nb", "a\x7f",
                                "a\xE2\x80\xAEgpj", "NUL", "com1.x", "  ", "a|b", tooLong.data()}) {
            info.setValue(QString::fromUtf8(bad), key("name"));
            QVERIFY2(orvelle::installerFileName(info).isEmpty(), bad);
        }
    }

    void addressAndSum_areUsableOrNot() {
        KvUpdateInfo info;
        for (const char* bad : {"", "file:///etc/passwd", "ftp://x/y", "x.exe", "http://"}) {
            info.setValue(key(bad), key("path"));
            QVERIFY2(!info.address().isValid(), bad);
        }
        const QString sum(64, QLatin1Char('A'));
        for (const QString& each : QStringList{sum.left(63), sum.left(62), sum.repeated(2),
                                               sum.left(62).append(key("xA"))}) {
            info.setValue(each, key("sha256"));
            QVERIFY(!info.hasUsableSha256());
        }
        info.setValue(key("\n") + sum, key("sha256"));
        QVERIFY(info.hasUsableSha256());
        QCOMPARE(info.sha256(), QByteArray(32, '\xaa'));
    }

    void check_tellsAFile_andIsSilentAboutTheRest() {
        WebServer server;
        server.give("/page", "not XML");
        server.give("/huge", "<u><version>9.9.9" + QByteArray(8 << 20, ' ') + "</version></u>");
        server.give("/moved", "302 Found", "Location: /good\r\n" + WebServer::length(0), "");
        server.give("/good", kGood);
        KvUpdater updater;
        QSignalSpy told(&updater, &KvUpdater::readUpdateInfo);
        for (const char* path : {"/page", "/huge", "/none"}) {
            const int before = server.requests.size();
            updater.start(server.address(key(path)));
            updater.check(before % 2);
            QTRY_VERIFY(server.requests.size() > before && server.clients == 0);
        }
        QVERIFY(server.requests.at(1).startsWith("POST /huge"));
        updater.start(server.address(key("/moved")));
        updater.check(0);
        QTRY_COMPARE(told.count(), 1);
        QCOMPARE(told.first().first().value<KvUpdateInfo*>()->versionNumber(), 117);
    }
};

static const orvelle::test::RegisterSuite<UpdateFileTest> kUpdateFileTest;
#include "update_file_test.moc"
