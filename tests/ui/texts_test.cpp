#include <QDirIterator>
#include <QRegularExpression>

#include "core/language.h"
#include "support/suites.h"
#include "ui/widgets/widget_utils.h"

namespace {

QString sourcesIn(const char* directory) {
    QString all;
    QDirIterator files(QLatin1String(directory), {QStringLiteral("*.cpp"), QStringLiteral("*.h")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        // The camera program speaks no language but English.
        if (!file.fileName().contains(QLatin1String("/camera/")) && file.open(QIODevice::ReadOnly))
            all += QString::fromUtf8(file.readAll());
    }
    // A long literal goes on in the next line.
    return all.remove(QRegularExpression(QStringLiteral("\"\\s*\n\\s*\"")));
}

QSet<QString> literalsIn(const QString& code, const char* pattern = "\"([a-z0-9_]+)\"") {
    const QRegularExpression literal{QLatin1String(pattern)};
    QSet<QString> found;
    for (auto matches = literal.globalMatch(code); matches.hasNext();)
        found += matches.next().captured(1);
    return found;
}

bool isImage(const QString& name) {
    return QFile::exists(KvWidgetUtils::image(name)) ||
           !KvWidgetUtils::imagesOf(name).normal.isEmpty();
}

}  // namespace

class TextsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(KvLanguage::load(QStringLiteral("english"), m_table)); }

    void keyOfACall_hasAText() {
        // Images' names stand in QStringLiteral.
        const QRegularExpression call(QStringLiteral(
            "\\b(?:text|textKey|setToolTip|setUpImageButton)(\\((?:[^()]++|(?1))*+\\))"));
        QSet<QString> keys;
        const QString sources = sourcesIn(ORVELLE_SOURCE_DIR);
        for (auto calls = call.globalMatch(sources); calls.hasNext();)
            keys += literalsIn(calls.next().captured(1), "(?<!QStringLiteral\\()\"([a-z0-9_]+)\"");
        QVERIFY(keys.size() > 10);
        for (const QString& key : qAsConst(keys))
            QVERIFY2(m_table.contains(key), qPrintable(key));
    }

    void joinedWords_areATextOrAnImage() {
        const QString sources = sourcesIn(ORVELLE_SOURCE_DIR "/ui");
        for (const QString& words : literalsIn(sources, "\"([a-z0-9]+_[a-z0-9_]+)\""))
            QVERIFY2(m_table.contains(words) || isImage(words), qPrintable(words));
    }

    void noText_isLeftOver() {
        const QSet<QString> used = literalsIn(sourcesIn(ORVELLE_SOURCE_DIR));
        for (const QString& key : m_table.keys())
            QVERIFY2(used.contains(key), qPrintable(key));
    }

private:
    KvLanguage::Table m_table;
};

static const orvelle::test::RegisterSuite<TextsTest> kTextsTest;
#include "texts_test.moc"
