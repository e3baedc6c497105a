#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

#include "update/minisign.h"

class KvUpdateInfo;

namespace orvelle {

class FileSums;

/// The installer as the update file describes it.
struct Installer {
    QUrl address;
    QString fileName;  ///< under which it is kept: one plain file
    QByteArray sha256;
};

/// Nothing where a part is missing or could not be meant: an address that is not safe or has no
/// file name, no checksum, a name that could be anything but one new plain file.
std::optional<Installer> installerOf(const KvUpdateInfo& info);

/// What an installer must be to be run: the file of the update file, signed by the maintainer.
struct InstallerProof {
    QByteArray name;  ///< under which it was signed
    QByteArray sha256;
    MinisignSignature signature;
    MinisignKey key;

    bool isOf(const FileSums& sums) const;
};

/// Lets the system run a downloaded file that is a program or a script by what it begins with.
void allowToRun(const QString& path);

}  // namespace orvelle
