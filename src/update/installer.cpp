#include "update/installer_file.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

#include "update/update_info.h"
#include "update/update_log.h"

namespace orvelle {

namespace {

constexpr int kMaxNameBytes = 200;

bool isForbidden(QChar character) {
    // Separators, streams and wildcards of all systems, control characters, and the invisible
    // ones that turn "exe.txt" round.
    return QStringLiteral("/\\:*?\"<>|").contains(character) || !character.isPrint() ||
           character.category() == QChar::Other_Format;
}

// Devices of Windows, with any extension.
bool isReserved(const QString& name) {
    static const QRegularExpression device(QStringLiteral("^(con|prn|aux|nul|com[0-9]|lpt[0-9])$"),
                                           QRegularExpression::CaseInsensitiveOption);
    return device.match(name.section(QLatin1Char('.'), 0, 0).trimmed()).hasMatch();
}

bool isPlainName(const QString& part) {
    return !part.isEmpty() && !part.startsWith(QLatin1Char('.')) &&
           !part.endsWith(QLatin1Char('.')) && !part.contains(QLatin1String("..")) &&
           std::none_of(part.begin(), part.end(), isForbidden) && !isReserved(part);
}

// Given but blank is no name, where one that is missing has a default.
QString givenOr(const KvUpdateInfo& info, const char* key, const QString& otherwise) {
    const QString given = info.value(QLatin1String(key));
    return given.isEmpty() ? otherwise : given.trimmed();
}

}  // namespace

QString installerFileName(const KvUpdateInfo& info) {
    const QString name = givenOr(info, "name", QString::number(info.versionNumber()));
    const QString type = givenOr(info, "type", QStringLiteral("exe"));
    const QString file = name + QLatin1Char('.') + type;
    if (isPlainName(name) && isPlainName(type) && file.toUtf8().size() <= kMaxNameBytes)
        return file;
    qCWarning(lcUpdate) << "file name of the installer refused:" << name << type;
    return {};
}

void allowToRun(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray begin = file.read(4);
    if (begin == QByteArrayLiteral("\x7f\x45LF") || begin.startsWith("#!"))
        file.setPermissions(file.permissions() | QFile::ExeOwner);
}

}  // namespace orvelle
