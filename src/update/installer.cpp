#include "update/installer.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

#include "update/file_sums.h"
#include "update/update_info.h"
#include "update/update_log.h"
#include "update/update_server.h"
#include "update/web_request.h"

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

/// Empty when refused.
QString fileNameOf(const KvUpdateInfo& info) {
    const QString name = givenOr(info, "name", QString::number(info.versionNumber()));
    const QString type = givenOr(info, "type", QStringLiteral("exe"));
    const QString file = name + QLatin1Char('.') + type;
    if (isPlainName(name) && isPlainName(type) && file.toUtf8().size() <= kMaxNameBytes)
        return file;
    return {};
}

}  // namespace

std::optional<Installer> installerOf(const KvUpdateInfo& info) {
    const Installer installer{info.address(), fileNameOf(info), info.sha256()};
    if (!mayLeadTo(QUrl(updateServer()), installer.address) ||
        installer.address.fileName().isEmpty() || installer.fileName.isEmpty() ||
        installer.sha256.isEmpty()) {
        qCWarning(lcUpdate) << "installer refused:" << info.value(QStringLiteral("path"))
                            << info.value(QStringLiteral("name"))
                            << info.value(QStringLiteral("type"))
                            << info.value(QStringLiteral("sha256"));
        return std::nullopt;
    }
    return installer;
}

bool InstallerProof::isOf(const FileSums& sums) const {
    return sums.sha256() == sha256 && signature.isOf(name, sums.blake2b(), key);
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
