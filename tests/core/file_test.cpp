#include <QDir>
#include <QSemaphore>

#include <algorithm>
#include <atomic>

#include "core/configure.h"
#include "core/file_utils.h"
#include "core/file_writer.h"
#include "core/language.h"
#include "core/log.h"
#include "core/safe_name.h"
#include "core/wipe.h"
#include "support/full_disk.h"
#include "support/suites.h"

namespace {

using Table = KvLanguage::Table;

// "key|text|key|text" as a table.
Table table(const char* entries) {
    Table result;
    const QStringList parts = QString::fromUtf8(entries).split(QLatin1Char('|'));
    for (int i = 0; i + 1 < parts.size(); i += 2)
        result.insert(parts.at(i), parts.at(i + 1));
    return result;
}

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

class FileTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QDir(KvFileUtils::dataRoot()).removeRecursively(); }

    void setting_comesBack_andIsANumberOrNot() {
        QVERIFY(KvConfigure().getBool(m_key, true) && !KvConfigure().remove(m_key));
        QVERIFY(!QFile::exists(settings()));
        for (const char* text : {"12", "-5", "12 cameras", "99999999999", "", "@Variant(\\x0)",
                                 "D:\\\xE5\xBD\x95/a, b;c=d%20\"[e]\"", " a\r\nb\t "}) {
            KvConfigure().setString(m_key, QString::fromUtf8(text));
            QCOMPARE(KvConfigure().getString(m_key, m_key), QString::fromUtf8(text));
            const bool isNumber = qstrlen(text) == 2;
            QCOMPARE(KvConfigure().getInt(m_key, 7), isNumber ? QByteArray(text).toInt() : 7);
        }
        QVERIFY(KvConfigure().remove(m_key) && !KvConfigure().contains(m_key));
    }

    void settingIsThereAtOnce_andInTheFileWhenTheWriterComesToIt() {
        QSemaphore disk;
        std::atomic<int> failures{0};
        orvelle::FileWriter writer([&failures] { ++failures; });
        KvConfigure::setWriter(&writer);
        writer.run(QStringLiteral("slow"), [&disk] {
            disk.acquire();
            return true;
        });
        QVERIFY(KvConfigure().setInt(m_key, 5) &&
                KvConfigure().setBool(QStringLiteral("b"), false));
        QVERIFY(KvConfigure().getInt(m_key, 0) == 5 && !QFile::exists(settings()));
        disk.release();
        writer.finish();
        QVERIFY(read(settings()).contains("device_max_id=5"));
        if (orvelle::test::FullDisk::isPossible()) {
            const orvelle::test::FullDisk full(4);
            QVERIFY(KvConfigure().setInt(m_key, 6));
            writer.finish();
            QVERIFY(failures == 1 && KvConfigure().getInt(m_key, 0) == 6);
        }
        // What failed comes with the next.
        QVERIFY(KvConfigure().remove(QStringLiteral("b")));
        writer.finish();
        KvConfigure::setWriter(nullptr);
        QVERIFY(!read(settings()).contains("b="));
        QVERIFY(!orvelle::test::FullDisk::isPossible() ||
                read(settings()).contains("device_max_id=6"));
        QCOMPARE(QDir(KvFileUtils::configurePath()).entryList(QDir::Files).size(), 1);
    }

    void damagedSettings_areReadAsDefaults_andWrittenAnew() {
        for (const QByteArray& content :
             {QByteArray("\xff\xfe\0[\n=]\x80", 8), QByteArray("[General]\ndevice_max_"),
              QByteArray("device_max_id=@Variant(\\0\\0\\0\\xff\\xff)\n"),
              QByteArray(100 << 20, 'x')}) {
            write(settings(), content);
            QCOMPARE(KvConfigure().getInt(m_key, 3), 3);
            KvConfigure().setInt(m_key, 4);
            QCOMPARE(KvConfigure().getInt(m_key, 3), 4);
        }
    }

    void paths_createTheirChain_whereTheyCan() {
        const QString uid = QStringLiteral("U1");
        QCOMPARE(KvFileUtils::videoPath(uid), KvFileUtils::dataRoot() + QLatin1String("/U1/Video"));
        // A plain file stands where the chosen directory should be.
        KvConfigure().setString(orvelle::settings::kMediaRoot, settings());
        QCOMPARE(KvFileUtils::videoPath(uid), settings() + QLatin1String("/U1/Video"));
        QVERIFY(!KvFileUtils::exists(KvFileUtils::videoPath(uid)));
        QVERIFY(KvFileUtils::resetMediaRoot() && !KvFileUtils::resetMediaRoot());
        KvConfigure().setString(orvelle::settings::kMediaRoot, {});
        QCOMPARE(KvFileUtils::mediaRoot(), KvFileUtils::dataRoot());
        QVERIFY(KvFileUtils::exists(KvFileUtils::videoPath(uid)));
    }

    void ownFiles_areClosedToOthers_andTheUsersAreNot() {
        if (QSysInfo::kernelType() == QLatin1String("winnt"))
            QSKIP("closed by access lists, which Qt does not show as rights");
        const auto rights = [](const QString& path) {
            return QFileInfo(path).permissions() & 0x77;
        };
        const QFile::Permissions none;
        const QString log = KvFileUtils::dataRoot() + QStringLiteral("/log");
        KvConfigure().setInt(m_key, 1);
        QVERIFY(orvelle::openLogFile(log));
        for (const QString& path :
             {KvFileUtils::dataRoot(), KvFileUtils::cachePath(m_key), KvFileUtils::configurePath(),
              KvFileUtils::devicesPath(m_key), KvFileUtils::updatePath(), settings(), log})
            QVERIFY2(rights(path) == none, qPrintable(path));
        QVERIFY(rights(KvFileUtils::videoPath(QStringLiteral("U1"))) != none);

        const QString elsewhere = KvFileUtils::mediaRoot() + QStringLiteral("/elsewhere");
        const QString thumbnail = KvFileUtils::cachePath(m_key) + QStringLiteral("/thumb.jpg");
        write(elsewhere, "picture");
        write(thumbnail, "picture");
        QVERIFY(QFile::link(elsewhere, KvFileUtils::cachePath() + QStringLiteral("/link")));
        const QStringList opened{KvFileUtils::dataRoot(),
                                 KvFileUtils::cachePath(m_key),
                                 settings(),
                                 log,
                                 thumbnail,
                                 elsewhere};
        for (const QString& path : opened)
            QFile::setPermissions(path,
                                  QFile::Permissions(QFileInfo(path).isDir() ? 0x7755 : 0x6644));
        KvConfigure().setInt(m_key, 2);
        KvFileUtils::closeToOthers();
        QVERIFY(orvelle::openLogFile(log));
        orvelle::closeLogFile();
        for (const QString& path : opened)
            QVERIFY2((rights(path) == none) == (path != elsewhere), qPrintable(path));
    }

    void nameOfTheNetwork_isMadeSafeToShow() {
        const std::tuple<const char16_t*, const char16_t*> cases[] = {
            {u"Gate 2 \u524d\u95e8 \u00dc", u"Gate 2 \u524d\u95e8 \u00dc"},
            {u" \t two\r\n  lines\u2028 \u2029", u"two lines"},
            {u"a\u0007\u001b[31mb\u007f\u0085", u"a[31mb"},
            {u"\u202egpj.exe\u202c \u2067x\u2069\u200f\u061c", u"gpj.exe x"},
            {u"\u200b\ufeff\u00ad", u""},
            {u"\xd83d\xdcf7 lone \xd83d", u"\xd83d\xdcf7 lone \ufffd"},
            {u"\ue000\uffff\ufffe\u0378", u""},
            {u"<b>&amp;</b>", u"<b>&amp;</b>"},
        };
        for (const auto& [given, shown] : cases)
            QCOMPARE(orvelle::safeName(QString::fromUtf16(given)), QString::fromUtf16(shown));
        QCOMPARE(orvelle::safeName(QStringLiteral("abcd efgh"), 5), QStringLiteral("abcd"));
        QCOMPARE(orvelle::safeName(QString(100000, QLatin1Char('x'))).size(), 64);
    }

    void wiped_leavesNothing_butWhatOthersHold() {
        std::string text(100, 'x');
        const char* const memory = text.data();
        { const orvelle::WipedAtEnd<std::string> wiped(text); }
        QVERIFY(text.empty() && text.data() == memory);
        QVERIFY(std::all_of(memory, memory + 100, [](char byte) { return byte == 0; }));
        QString shared = QStringLiteral("secret").repeated(2);
        const QString kept = shared;
        orvelle::wipe(shared);
        QVERIFY(shared.isEmpty());
        QCOMPARE(kept, QStringLiteral("secretsecret"));
        QByteArray bytes("secret");
        orvelle::wipe(bytes);
        QVERIFY(bytes.isEmpty());
    }

    void language_readsTheEntries_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<Table>("expected");
        const auto row = [](const char* name, const QByteArray& content, const char* expected) {
            QTest::newRow(name) << content << table(expected);
        };
        row("quoted or bare", "a = \"b c\";\nd=\"e\";\nf = g\n", "a|b c|d|e|f|g");
        row("one blank a side", "a  =  b  \n", "a | b ");
        row("blank after semicolon", "a = \"b\"; \n", "a|b\";");
        row("semicolon inside", "a = \"b;\"\n", "a|b;");
        row("lone marks", "a=;\nb=\"\nc= \n=d\ne=\"\"f\"\"\n", "a||b||c|||d|e|\"f\"");
        row("none or two equal signs", "a\n   \na==b\nc=d=e\nf=g\n", "f|g");
        row("empty line ends", "a=b\r\na=c\r\n\r\nc=d\r\n", "a|c");
        row("byte order mark, Chinese", "\xEF\xBB\xBFz=\xE5\x9C\xA8;\n", "z|\xE5\x9C\xA8");
        row("torn", "a=b\nc = \"d", "a|b|c|d");
        row("not UTF-8, torn character", "a=\xD4\xDA\xCF\xDF\nc=d\ne=\xE5\x9C", "c|d");
        row("zero byte", QByteArray("\0\na=b\n", 6), "a|b");
        row("huge", QByteArray("a=b\n") + QByteArray(100 << 20, 'x'), "");
    }

    void language_readsTheEntries() {
        QFETCH(QByteArray, content);
        write(KvFileUtils::dataRoot() + QStringLiteral("/test.lg"), content);
        for (const char* rootEnd : {"", "/"})
            for (const char* name : {"test", "test.lg"}) {
                KvLanguage::setRoot(KvFileUtils::dataRoot() + QLatin1String(rootEnd));
                Table read = table("former|entry");
                KvLanguage::load(QLatin1String(name), read);
                QTEST(read, "expected");
            }
    }

    void shippedLanguages_haveTheSameKeysAndNoLostLine() {
        KvLanguage::setRoot(QStringLiteral(ORVELLE_LANGUAGE_DIR));
        Table english;
        Table chinese;
        QVERIFY(KvLanguage::load(QStringLiteral("english"), english));
        QVERIFY(KvLanguage::load(QStringLiteral("chinese"), chinese));
        QCOMPARE(english.keys(), chinese.keys());
        for (const char* name : {"english", "chinese"}) {
            QFile file(QStringLiteral(ORVELLE_LANGUAGE_DIR "/%1.lg").arg(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(english.size(), file.readAll().count('\n'));
        }
    }

private:
    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static QString settings() {
        return KvFileUtils::configurePath() + QLatin1String("/configure.ini");
    }

    const QString m_key = orvelle::settings::kDeviceMaxId;
};

const orvelle::test::RegisterSuite<FileTest> kRegistered;

}  // namespace

#include "file_test.moc"
