#include "camera/camera_password.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <QVector>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include <sodium.h>

#include "core/file_utils.h"
#include "core/wipe.h"
#include "link/device_code.h"
#include "platform/private_file.h"
#include "platform/user_folders.h"

namespace orvelle {

namespace {

constexpr char kVariable[] = "ORVELLE_CAMERA_PASSWORD";
constexpr int kMinCharacters = 8;

// Sixteen of these are 82 bits, and the device code packs them without loss: it has capitals and
// digits, but not small letters besides, in one of its smaller alphabets.
constexpr char kSymbols[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr int kMadeCharacters = 16;

// Neither could a client keep: its files are XML.
bool isControl(uint character) {
    return QChar::category(character) == QChar::Other_Control || character == 0xFFFE ||
           character == 0xFFFF;
}

/// A password of the source, or why it will not do.
FoundPassword checked(std::string password, const QString& source) {
    FoundPassword found;
    const QString refusal = passwordRefusal(password);
    if (refusal.isEmpty())
        found.text = password;
    else
        found.error = QStringLiteral("the password in %1 %2").arg(source, refusal);
    wipe(password);
    return found;
}

QString complaintAbout(const QFile& file) {
    switch (privacyOf(file.handle())) {
        case FilePrivacy::kOpenToOthers:
            return QStringLiteral("the password file %1 is open to others: chmod 600 %1");
        case FilePrivacy::kOfOthers:
            return QStringLiteral("the password file %1 belongs to another user");
        case FilePrivacy::kPrivate:
            break;
    }
    return {};
}

FoundPassword readFile(const QString& path) {
    FoundPassword found;
    QFile file(path);
    // Unbuffered, since a buffer would not be wiped.
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        found.error =
            QStringLiteral("cannot read the password file %1: %2").arg(path, file.errorString());
        return found;
    }
    const QString complaint = complaintAbout(file);
    if (!complaint.isEmpty()) {
        found.error = complaint.arg(path);
        return found;
    }
    QByteArray line = file.readLine(kMaxPasswordBytes + 3);
    const WipedAtEnd<QByteArray> wiped(line);
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return checked(line.toStdString(), path);
}

std::optional<std::string> takeFromEnvironment() {
    char* const value = std::getenv(kVariable);
    if (!value)
        return std::nullopt;
    std::string password(value);
    // What is only unset could still be read in the process's first environment.
    wipe(value, password.size());
    qunsetenv(kVariable);
    return password;
}

std::string makePassword() {
    std::string password(kMadeCharacters, ' ');
    for (char& character : password)
        character = kSymbols[randombytes_uniform(sizeof kSymbols - 1)];
    return password;
}

/// Writes a new password to `path` unless another program was first; what went wrong, or empty.
QString writeMadePassword(const QString& path) {
    std::string password = makePassword();
    const WipedAtEnd<std::string> wiped(password);
    QTemporaryFile file(path + QStringLiteral(".XXXXXX"));
    const auto size = static_cast<qint64>(password.size());
    if (!file.open() || file.write(password.data(), size) != size || file.write("\n") != 1 ||
        !file.flush() || !KvFileUtils::syncFile(file.fileName()))
        return file.errorString();
    // Unlike renaming, this never replaces what another camera of the UID has begun to use.
    std::error_code error;
    std::filesystem::create_hard_link(std::filesystem::u8path(file.fileName().toStdString()),
                                      std::filesystem::u8path(path.toStdString()), error);
    if (error && error != std::errc::file_exists)
        return QString::fromStdString(error.message());
    // Not every system can promise it of a folder.
    KvFileUtils::syncFile(QFileInfo(path).path());
    return {};
}

FoundPassword keptPassword(const PasswordSources& sources) {
    const QString directory = sources.stateDirectory.isEmpty()
                                  ? stateRoot() + QStringLiteral("/orvelle-camera")
                                  : QDir(sources.stateDirectory).absolutePath();
    const QString path = QStringLiteral("%1/%2.password").arg(directory, sources.uid);
    const bool isKept = QFileInfo::exists(path);
    FoundPassword found;
    if (!isKept && !sources.mayMake) {
        found.error =
            QStringLiteral("no password is kept in %1: the camera makes it at its first start")
                .arg(path);
        return found;
    }
    if (!isKept) {
        KvFileUtils::mkdir(QFileInfo(directory).path());
        const QString error = makePrivateFolder(directory.toStdString())
                                  ? writeMadePassword(path)
                                  : QStringLiteral("the folder cannot be made");
        if (!error.isEmpty()) {
            found.error = QStringLiteral(
                              "cannot keep a password in %1 (%2): use --state or "
                              "--password-file")
                              .arg(path, error);
            return found;
        }
    }
    found = readFile(path);
    if (!isKept)
        found.madeFile = path;
    return found;
}

}  // namespace

QString passwordRefusal(const std::string& password) {
    const QByteArray bytes = QByteArray::fromRawData(password.data(), int(password.size()));
    QString text = QString::fromUtf8(bytes);
    const WipedAtEnd<QString> wiped(text);
    QVector<uint> characters = text.toUcs4();
    const int size = characters.size();
    const bool hasControl = std::any_of(characters.cbegin(), characters.cend(), isControl);
    wipe(characters.data(), static_cast<size_t>(size) * sizeof(uint));
    if (password.empty())
        return QStringLiteral("is empty");
    if (password.find('\0') != std::string::npos)
        return QStringLiteral("holds a NUL byte");
    if (password.size() > size_t{kMaxPasswordBytes})
        return QStringLiteral("is longer than %1 bytes").arg(kMaxPasswordBytes);
    if (text.toUtf8() != bytes)
        return QStringLiteral("is not UTF-8");
    if (hasControl)
        return QStringLiteral("holds a control character");
    if (size < kMinCharacters)
        return QStringLiteral("is shorter than %1 characters").arg(kMinCharacters);
    return {};
}

FoundPassword findPassword(const PasswordSources& sources) {
    FoundPassword found;
    if (sodium_init() < 0) {
        found.error = QStringLiteral("this machine has no source of random numbers");
        return found;
    }
    std::optional<std::string> given = takeFromEnvironment();
    if (!sources.file.isEmpty())
        found = readFile(sources.file);
    else if (given)
        found = checked(*given, QLatin1String(kVariable));
    else
        found = keptPassword(sources);
    if (given)
        wipe(*given);
    return found;
}

}  // namespace orvelle
