#include "core/language.h"

#include <QFile>
#include <QLoggingCategory>
#include <QTextCodec>
#include <QtDebug>

#include <mutex>

namespace {

Q_LOGGING_CATEGORY(lcCore, "orvelle.core")

// Far above any real table; a file beyond it is not a language file.
constexpr qint64 kMaxFileBytes = 4 << 20;

// Worker threads look names up while the interface thread loads the tables for a rebuilt window.
std::mutex s_mutex;  // guards the three below
QString s_root;
QString s_language;
KvLanguage::Table s_table;

QString cleaned(QString side) {
    if (side.startsWith(QLatin1Char(' ')))
        side.remove(0, 1);
    if (side.endsWith(QLatin1Char(' ')) || side.endsWith(QLatin1Char(';')))
        side.chop(1);
    if (side.startsWith(QLatin1Char('"')))
        side.remove(0, 1);
    if (side.endsWith(QLatin1Char('"')))
        side.chop(1);
    return side;
}

QByteArray nextLine(QFile& file) {
    QByteArray line = file.readLine();
    if (line.endsWith('\n'))
        line.chop(1);
    if (line.endsWith('\r'))
        line.chop(1);
    return line;
}

bool decode(const QByteArray& line, QString& text) {
    QTextCodec::ConverterState state;
    text = QTextCodec::codecForName("UTF-8")->toUnicode(line.constData(), line.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

void readEntries(QFile& file, KvLanguage::Table& table) {
    int undecodable = 0;
    int odd = 0;
    QString text;
    for (QByteArray line = nextLine(file); !line.isEmpty(); line = nextLine(file)) {
        if (!decode(line, text)) {
            ++undecodable;
            continue;
        }
        const QStringList sides = text.split(QLatin1Char('='));
        if (sides.size() == 2)
            table.insert(cleaned(sides.at(0)), cleaned(sides.at(1)));
        else
            ++odd;
    }
    const QByteArray name = file.fileName().toUtf8();
    if (undecodable > 0)
        qCWarning(lcCore, "%s: skipped %d lines that are not UTF-8", name.constData(), undecodable);
    if (odd > 0)
        qCWarning(lcCore, "%s: skipped %d lines without exactly one '='", name.constData(), odd);
    if (!file.atEnd())
        qCWarning(lcCore, "%s: ends at an empty line, %lld bytes are left out", name.constData(),
                  static_cast<long long>(file.size() - file.pos()));
}

QString filePath(const QString& name) {
    const QLatin1String ending(".lg");
    const std::lock_guard<std::mutex> lock(s_mutex);
    QString path = s_root;
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    path += name;
    if (!name.endsWith(ending))
        path += ending;
    return path;
}

}  // namespace

void KvLanguage::setRoot(const QString& root) {
    qDebug("root = %s", qUtf8Printable(root));
    const std::lock_guard<std::mutex> lock(s_mutex);
    s_root = root;
}

void KvLanguage::load(const QString& language) {
    Table table;
    load(language, table);
    qDebug("%d", table.size());
    const std::lock_guard<std::mutex> lock(s_mutex);
    s_language = language;
    s_table.swap(table);
}

bool KvLanguage::load(const QString& name, Table& table) {
    table.clear();
    QFile file(filePath(name));
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcCore, "no language file %s", qUtf8Printable(file.fileName()));
        return false;
    }
    if (file.size() > kMaxFileBytes) {
        qCWarning(lcCore, "%s: too large for a language file", qUtf8Printable(file.fileName()));
        return false;
    }
    readEntries(file, table);
    return true;
}

QString KvLanguage::getLanguage() {
    const std::lock_guard<std::mutex> lock(s_mutex);
    return s_language;
}

QString KvLanguage::getString(const QString& key) {
    const std::lock_guard<std::mutex> lock(s_mutex);
    return s_table.value(key, key);
}
