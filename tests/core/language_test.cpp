#include "core/language.h"

#include <QTemporaryDir>

#include <thread>

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

class LanguageTest : public QObject {
    Q_OBJECT

private slots:
    void init() { KvLanguage::setRoot(m_root.path()); }

    void load_readsTheEntries_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<Table>("expected");
        const auto row = [](const char* name, const QByteArray& content, const char* expected) {
            QTest::newRow(name) << content << table(expected);
        };
        row("quoted, with blanks or none, bare", "a = \"b c\";\nd=\"e\";\nf = g\n",
            "a|b c|d|e|f|g");
        row("one blank a side", "a  =  b  \n", "a | b ");
        row("blank after semicolon", "a = \"b\"; \n", "a|b\";");
        row("semicolon inside", "a = \"b;\"\n", "a|b;");
        row("two quotes", "a = \"\"b\"\"\n", "a|\"b\"");
        row("lone marks", "a=;\nb=\"\nc= \n=d\n", "a||b||c|||d");
        row("none or two equal signs", "a\n   \na==b\nc=d=e\nf=g\n", "f|g");
        row("empty line ends", "a=b\n\nc=d\n", "a|b");
        row("empty line of DOS ends", "a=b\r\n\r\nc=d\r\n", "a|b");
        row("later wins", "a=b\na=c\n", "a|c");
        row("byte order mark, Chinese", "\xEF\xBB\xBFz=\xE5\x9C\xA8;\n", "z|\xE5\x9C\xA8");
        row("torn", "a=b\nc = \"d", "a|b|c|d");
        row("torn within a character", "a=b\nc=\xE5\x9C", "a|b");
        row("not UTF-8", "a=\xD4\xDA\xCF\xDF\nc=d\n", "c|d");
        row("zero byte", QByteArray("\0\na=b\n", 6), "a|b");
        row("empty", "", "");
    }

    void load_readsTheEntries() {
        QFETCH(QByteArray, content);
        write(content);
        Table read = table("former|entry");
        QVERIFY(KvLanguage::load(QStringLiteral("test"), read));
        QTEST(read, "expected");
    }

    void load_findsTheFile_howeverItIsNamed() {
        write("key = \"text\";\n");
        for (const char* rootEnd : {"", "/"})
            for (const char* name : {"test", "test.lg"}) {
                KvLanguage::setRoot(m_root.path() + QLatin1String(rootEnd));
                KvLanguage::load(QLatin1String(name));
                QCOMPARE(KvLanguage::getLanguage(), QLatin1String(name));
                QCOMPARE(KvLanguage::getString(QStringLiteral("key")), QStringLiteral("text"));
                QCOMPARE(KvLanguage::getString(QStringLiteral("Key")), QStringLiteral("Key"));
            }
    }

    void load_refusesTheFile_whenMissingOrHuge() {
        write("a=b\n");
        QVERIFY(QFile::resize(m_root.filePath(QStringLiteral("test.lg")), 100 << 20));
        for (const char* name : {"test", "missing", ""}) {
            Table read = table("former|entry");
            QVERIFY(!KvLanguage::load(QLatin1String(name), read));
            QVERIFY(read.isEmpty());
        }
    }

    void getString_isSafe_whileAnotherThreadLoads() {
        write("key=text\n");
        KvLanguage::load(QStringLiteral("test"));
        std::thread loader([] {
            for (int i = 0; i < 50; ++i)
                KvLanguage::load(QStringLiteral("test"));
        });
        bool isAlwaysFound = true;
        for (int i = 0; i < 2000; ++i)
            isAlwaysFound &= KvLanguage::getString(QStringLiteral("key")) == QLatin1String("text");
        loader.join();
        QVERIFY(isAlwaysFound);
    }

    void shippedTables_haveTheSameKeysAndNoLostLine() {
        KvLanguage::setRoot(QStringLiteral(ORVELLE_LANGUAGE_DIR));
        Table tables[2];
        for (const char* name : {"english", "chinese"}) {
            tables[0].swap(tables[1]);
            QVERIFY(KvLanguage::load(QLatin1String(name), tables[0]));
            QFile file(QStringLiteral(ORVELLE_LANGUAGE_DIR "/%1.lg").arg(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(tables[0].size(), file.readAll().count('\n'));
        }
        QCOMPARE(tables[0].keys(), tables[1].keys());
    }

private:
    void write(const QByteArray& content) const {
        QFile file(m_root.filePath(QStringLiteral("test.lg")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    const QTemporaryDir m_root;
};

const orvelle::test::RegisterSuite<LanguageTest> kRegistered;

}  // namespace

#include "language_test.moc"
