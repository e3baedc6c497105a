#pragma once

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "update/web_server.h"

namespace orvelle::test {

/// Certificates of servers, made with openssl: by an authority of its own, or each by itself.
class Certificates {
public:
    Certificates() { make(QStringLiteral("authority"), {}); }

    QSslCertificate authority() const { return certificate(QStringLiteral("authority")); }

    /// For a server that is known as `subject`, such as "IP:127.0.0.1".
    TlsIdentity byAuthority(const QString& subject) {
        const QString ca = m_folder.filePath(QStringLiteral("authority"));
        make(QStringLiteral("server"),
             {QStringLiteral("-addext"), kName + subject, QStringLiteral("-CA"), ca + kPem,
              QStringLiteral("-CAkey"), ca + kKey});
        return identity(QStringLiteral("server"));
    }
    TlsIdentity byItself(const QString& subject) {
        make(QStringLiteral("self"), {QStringLiteral("-addext"), kName + subject});
        return identity(QStringLiteral("self"));
    }

private:
    void make(const QString& name, const QStringList& more) {
        const QString path = m_folder.filePath(name);
        const QString common = QStringLiteral(
            "req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj");
        QProcess::execute(QStringLiteral("openssl"),
                          common.split(QLatin1Char(' ')) +
                              QStringList{QStringLiteral("/CN=") + name, QStringLiteral("-out"),
                                          path + kPem, QStringLiteral("-keyout"), path + kKey} +
                              more);
    }
    TlsIdentity identity(const QString& name) const {
        QFile key(m_folder.filePath(name + kKey));
        key.open(QIODevice::ReadOnly);
        return {certificate(name), QSslKey(key.readAll(), QSsl::Ec)};
    }
    QSslCertificate certificate(const QString& name) const {
        return QSslCertificate::fromPath(m_folder.filePath(name + kPem)).value(0);
    }

    const QString kPem = QStringLiteral(".pem");
    const QString kKey = QStringLiteral(".key");
    const QString kName = QStringLiteral("subjectAltName=");
    const QTemporaryDir m_folder;
};

}  // namespace orvelle::test
