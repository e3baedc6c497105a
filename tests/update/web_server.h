#pragma once

#include <QMap>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>

#include <algorithm>
#include <utility>

namespace orvelle::test {

/// How a server proves who it is.
struct TlsIdentity {
    QSslCertificate certificate;
    QSslKey key;
};

/// A web server on this machine that gives raw answers by path and then closes: over TLS where it
/// has an identity.
class WebServer : public QTcpServer {
public:
    explicit WebServer(const TlsIdentity& identity = TlsIdentity()) : m_identity(identity) {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            ++clients;
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(*socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                --clients;
                socket->deleteLater();
            });
        });
    }

    QString address(const QString& path = {}) const {
        const QString scheme = QLatin1String(isSecure() ? "https" : "http");
        return QStringLiteral("%1://127.0.0.1:%2").arg(scheme).arg(serverPort()) + path;
    }
    /// `headers` end each in "\r\n".
    void give(const QByteArray& path, const QByteArray& status, const QByteArray& headers,
              const QByteArray& body) {
        pages[path] = "HTTP/1.1 " + status + "\r\n" + headers + "Connection: close\r\n\r\n" + body;
    }
    void give(const QByteArray& path, const QByteArray& body) {
        give(path, "200 OK", length(body.size()), body);
    }
    static QByteArray length(int bytes) {
        return "Content-Length: " + QByteArray::number(bytes) + "\r\n";
    }

    QMap<QByteArray, QByteArray> pages;
    QList<QByteArray> requests;
    QByteArray stalled;  ///< the path that is never done
    int clients = 0;

protected:
    void incomingConnection(qintptr descriptor) override {
        auto* socket = new QSslSocket(this);
        socket->setSocketDescriptor(descriptor);
        if (isSecure()) {
            socket->setLocalCertificate(m_identity.certificate);
            socket->setPrivateKey(m_identity.key);
            socket->startServerEncryption();
        }
        addPendingConnection(socket);
    }

private:
    bool isSecure() const { return !m_identity.key.isNull(); }
    void serve(QTcpSocket& socket) {
        if (socket.peek(65536).contains("\r\n\r\n")) {
            requests << socket.readAll();
            const QByteArray path = requests.last().split(' ').value(1);
            socket.write(pages.value(path,
                                     "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n"
                                     "Connection: close\r\n\r\nnone"));
            if (path != stalled)
                socket.disconnectFromHost();
        }
    }

    const TlsIdentity m_identity;
};

/// Whether a request began like this.
inline bool wasAsked(const WebServer& server, const QByteArray& beginning) {
    return std::any_of(server.requests.begin(), server.requests.end(),
                       [&](const QByteArray& request) { return request.startsWith(beginning); });
}

/// The server under an address of this machine that does not look like one.
inline QByteArray elsewhere(const WebServer& server) {
    return "http://0.0.0.0:" + QByteArray::number(server.serverPort());
}

}  // namespace orvelle::test
