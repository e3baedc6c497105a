#include "update/web_request.h"

#include <QHostAddress>
#include <QNetworkReply>

#include <memory>

#include "update/update_log.h"

namespace orvelle {

static bool isThisMachine(const QString& host) {
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

static bool isSecure(const QUrl& address) {
    return address.scheme() == QLatin1String("https");
}

bool isSafeAddress(const QUrl& address) {
    if (!address.isValid() || address.host().isEmpty())
        return false;
    return isSecure(address) ||
           (address.scheme() == QLatin1String("http") && isThisMachine(address.host()));
}

bool mayLeadTo(const QUrl& from, const QUrl& to) {
    return isSafeAddress(to) && (isSecure(to) || !isSecure(from));
}

QUrl signatureAddress(const QUrl& file) {
    QUrl signature = file;
    signature.setPath(file.path(QUrl::FullyEncoded) + QStringLiteral(".minisig"),
                      QUrl::TolerantMode);
    return signature;
}

QNetworkRequest webRequest(const QUrl& address, int stallMs) {
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    // The announced length is that of the file only when nothing is packed on the way.
    request.setRawHeader(QByteArrayLiteral("Accept-Encoding"), QByteArrayLiteral("identity"));
    request.setTransferTimeout(stallMs);
    return request;
}

void followSafely(QNetworkReply& reply, std::function<void()> refuse) {
    const auto from = std::make_shared<QUrl>(reply.url());
    const auto follow = [&reply, from, refuse = std::move(refuse)](const QUrl& to) {
        if (!mayLeadTo(*from, to)) {
            qCWarning(lcUpdate) << "redirection refused:" << *from << "to" << to;
            refuse();
            return;
        }
        *from = to;
        emit reply.redirectAllowed();
    };
    QObject::connect(&reply, &QNetworkReply::redirected, &reply, follow);
}

}  // namespace orvelle
