#pragma once

#include <QMap>
#include <QTcpServer>
#include <QTcpSocket>

#include <utility>

namespace orvelle::test {

/// A web server on this machine that gives raw answers by path and then closes.
class WebServer : public QTcpServer {
public:
    WebServer() {
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
        return QStringLiteral("http://127.0.0.1:%1").arg(serverPort()) + path;
    }
    /// `headers` end each in "\r\n".
    void give(const char* path, const QByteArray& status, const QByteArray& headers,
              const QByteArray& body) {
        pages[path] = "HTTP/1.1 " + status + "\r\n" + headers + "Connection: close\r\n\r\n" + body;
    }
    void give(const char* path, const QByteArray& body) {
        give(path, "200 OK", length(body.size()), body);
    }
    static QByteArray length(int bytes) {
        return "Content-Length: " + QByteArray::number(bytes) + "\r\n";
    }

    QMap<QByteArray, QByteArray> pages;
    QList<QByteArray> requests;
    QByteArray stalled;  ///< the path that is never done
    int clients = 0;

private:
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
};

}  // namespace orvelle::test
