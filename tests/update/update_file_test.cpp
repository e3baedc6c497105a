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
    "<?xml version=\"1.0\"?><update a='1'><version>1.1.7</version>"
    "<description>D</description><description_ch>\xE4\xB8\x80\\n\xE4\xBA\x8C"
    "</description_ch><path>https://x.test/a.exe</path></update>";

// Ten of the one before in each.
QByteArray entityBomb() {
    QByteArray xml = "<!DOCTYPE u [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 10; ++i) {
        xml += "<!ENTITY a" + QByteArray::number(i) + " \"";
        for (int k = 0; k < 10; ++k)
            xml += "&a" + QByteArray::number(i - 1) + ";";
        xml += "\">";
    }
    return xml + "]><u><version>&a9;</version></u>";
}

}  // namespace

class UpdateFileTest : public QObject {
    Q_OBJECT

private slots:
    void version_isOffered_whenItsNumberIsHigher_data() {
        QTest::addColumn<int>("number");
        QTest::addColumn<bool>("isOffered");  // to 1.1.6
        const auto row = [](const char* version, int number, bool isOffered) {
            QTest::newRow(version) << number << isOffered;
        };
        row("1.1.6", 116, false);
        row("1.1.7", 117, true);
        row("1.2", 120, true);
        row("2", 200, true);
        row("1.1.10", 120, true);
        row("1.0.9", 109, false);
        row(" 1.1.7-beta", 117, true);
        row("1.1.7.9", 117, true);
        row("1..9", 100, false);
        row("", 0, false);
        row("v2.0.0", 0, false);
        row("-2.0.0", 0, false);
        row("99999999999999.0.0", 99'999'900, true);
    }
    void version_isOffered_whenItsNumberIsHigher() {
        const QString version = QString::fromLatin1(QTest::currentDataTag());
        QTEST(orvelle::versionNumber(version), "number");
        QTEST(orvelle::isNewerVersion(version, QStringLiteral("1.1.6")), "isOffered");
    }

    void notes_areThoseOfTheLanguage_orAny() {
        const struct {
            const char* language;
            const char* empty;  // the key that is left out
            const char* expected;
        } cases[] = {{"chinese", "", "c1\r\nc2"},
                     {"english", "", "e"},
                     {"klingon", "", "e"},
                     {"chinese", "description_ch", "any"},
                     {"english", "description_en", "any"}};
        for (const auto& each : cases) {
            KvUpdateInfo info;
            QVERIFY(
                info.read("<u><description>any</description><description_en>e</description_en>"
                          "<description_ch>c1\\r\\nc2</description_ch></u>"));
            info.setValue(QString(), QLatin1String(each.empty));
            KvLanguage::load(QLatin1String(each.language));
            QCOMPARE(info.notes(), QLatin1String(each.expected));
        }
    }

    void file_isReadOrRefused_data() {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<QString>("version");  // null: refused
        const auto row = [](const char* name, const QByteArray& xml, const char* version) {
            QTest::newRow(name) << xml << QString::fromLatin1(version);
        };
        row("good", kGood, "1.1.7");
        row("nested", "<u><version>1<b>9</b>.2</version></u>", "1.2");
        row("twice", "<u><version>1</version><version>2</version></u>", "2");
        row("entities", "<u><version>&#49;&lt;</version></u>", "1<");
        row("empty", "", nullptr);
        row("no entry", "<u/>", nullptr);
        row("page", "<html><body><br></body></html>", nullptr);
        row("torn", kGood.left(80), nullptr);
        row("garbage behind", kGood + "<more/>", nullptr);
        row("not UTF-8", "<u><version>\xff\xfe</version></u>", nullptr);
        row("bytes", QByteArray("\0\1\2<u>", 6), nullptr);
        row("entity bomb", entityBomb(), nullptr);
        row("outer entity",
            "<!DOCTYPE u [<!ENTITY f SYSTEM \"file:///etc/hostname\">]><u><version>&f;</version>"
            "</u>",
            "");
    }
    void file_isReadOrRefused() {
        QFETCH(QByteArray, xml);
        QFETCH(QString, version);
        KvUpdateInfo info;
        info.setValue(QStringLiteral("old"), QStringLiteral("name"));
        QCOMPARE(info.read(xml), !version.isNull());
        QCOMPARE(info.value(QStringLiteral("version")), version);
        QVERIFY(info.value(QStringLiteral("name")).isEmpty());
    }

    void installerName_isPlainOrRefused() {
        const struct {
            const char* name;
            const char* type;
            const char* file;
        } cases[] = {
            {"", "", "117.exe"},
            {" set up ", "deb", "set up.deb"},
            {"a.b", "tar.gz", "a.b.tar.gz"},
            {"\xE6\x96\xB0", "", "\xE6\x96\xB0.exe"},
            {"../a", "", ""},
            {"..", "", ""},
            {"a..b", "", ""},
            {"a/b", "", ""},
            {"a\\b", "", ""},
            {"C:a", "", ""},
            {"a", "exe/../../b", ""},
            {"a", "e:x", ""},
            {".a", "", ""},
            {"a", ".", ""},
            {"a\nb", "", ""},
            {"a\x7f", "", ""},
            {"a\xE2\x80\xAEgpj", "", ""},
            {"NUL", "", ""},
            {"com1.x", "", ""},
            {"lpt9", "txt", ""},
            {"  ", "", ""},
            {"a", " ", ""},
            {"a\"b", "", ""},
            {"a|b", "", ""},
        };
        for (const auto& each : cases) {
            KvUpdateInfo info;
            info.setValue(QStringLiteral("1.1.7"), QStringLiteral("version"));
            info.setValue(QString::fromUtf8(each.name), QStringLiteral("name"));
            info.setValue(QString::fromUtf8(each.type), QStringLiteral("type"));
            QCOMPARE(orvelle::installerFileName(info), QString::fromUtf8(each.file));
        }
        KvUpdateInfo info;
        info.setValue(QString(250, QLatin1Char('a')), QStringLiteral("name"));
        QVERIFY(orvelle::installerFileName(info).isEmpty());
    }

    void addressAndSum_areUsableOrNot() {
        KvUpdateInfo info;
        const QString path = QStringLiteral("path");
        for (const char* bad :
             {"", "file:///etc/passwd", "ftp://x/y", "x.exe", "http://", "data:,"}) {
            info.setValue(QLatin1String(bad), path);
            QVERIFY2(!info.address().isValid(), bad);
        }
        info.setValue(QStringLiteral("\n https://x.test/a b.exe\n"), path);
        QVERIFY(info.address().isValid());
        const QString sum = QStringLiteral("sha256");
        QVERIFY(info.hasUsableSha256() && info.sha256().isEmpty());
        info.setValue(QStringLiteral(" %1 ").arg(QString(64, QLatin1Char('A'))), sum);
        QVERIFY(info.hasUsableSha256());
        QCOMPARE(info.sha256(), QByteArray(32, '\xaa'));
        for (const int digits : {63, 62, 66}) {
            info.setValue(QString(digits, QLatin1Char('a')), sum);
            QVERIFY(!info.hasUsableSha256());
        }
        info.setValue(QString(63, QLatin1Char('a')) + QLatin1String("xa"), sum);
        QVERIFY(!info.hasUsableSha256());
    }

    void check_tellsAFile_andIsSilentAboutTheRest() {
        WebServer server;
        server.give("/a%20b/info.xml", QByteArray());
        server.give("/page", "not XML");
        server.give("/huge", "<u><version>9.9.9" + QByteArray(8 << 20, ' ') + "</version></u>");
        server.give("/moved", "302 Found", "Location: /good\r\n" + WebServer::length(0), "");
        server.give("/good", kGood);
        KvUpdater updater;
        QSignalSpy told(&updater, &KvUpdater::readUpdateInfo);
        int asked = 0;
        for (const char* path : {"/a%20b/info.xml", "/page", "/huge", "/none"}) {
            updater.start(server.address(QLatin1String(path)));
            updater.check(asked % 2);
            ++asked;
            QTRY_COMPARE(server.requests.size(), asked);
            QTRY_COMPARE(server.clients, 0);
        }
        QVERIFY(server.requests.first().startsWith("GET /a%20b/info.xml"));
        QVERIFY(server.requests.at(1).startsWith("POST /page"));
        updater.start(server.address(QStringLiteral("/moved")));
        updater.check(0);
        QTRY_COMPARE(told.count(), 1);
        QCOMPARE(told.first().first().value<KvUpdateInfo*>()->versionNumber(), 117);
    }
};

static const orvelle::test::RegisterSuite<UpdateFileTest> kUpdateFileTest;
#include "update_file_test.moc"
