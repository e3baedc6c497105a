#include "update/updater.h"

#include <QNetworkReply>
#include <QNetworkRequest>

#include "update/update_log.h"

namespace {

// Notes in two languages; a file beyond it is no update file.
constexpr qint64 kMaxBytes = 256 * 1024;
constexpr int kTimeoutMs = 15'000;

QNetworkRequest requestFor(const QUrl& address) {
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setTransferTimeout(kTimeoutMs);
    return request;
}

}  // namespace

KvUpdater::KvUpdater(QObject* parent) : QObject(parent) {}

KvUpdater::~KvUpdater() = default;

void KvUpdater::start(const QString& address) {
    m_address = QUrl(QUrl::fromPercentEncoding(address.toUtf8()));
}

void KvUpdater::check(int flag) {
    if (!m_manager) {
        m_manager = std::make_unique<QNetworkAccessManager>();
        connect(m_manager.get(), &QNetworkAccessManager::finished, this,
                &KvUpdater::onReplayFinished);
    }
    QNetworkRequest request = requestFor(m_address);
    QNetworkReply* reply = nullptr;
    if (flag == 1) {
        request.setHeader(QNetworkRequest::ContentTypeHeader,
                          QStringLiteral("application/x-www-form-urlencoded"));
        reply = m_manager->post(request, QByteArrayLiteral("check=version"));
    } else {
        reply = m_manager->get(request);
    }
    reply->setReadBufferSize(2 * kMaxBytes);
    connect(reply, &QNetworkReply::readyRead, reply, [reply] {
        if (reply->bytesAvailable() > kMaxBytes)
            reply->abort();
    });
}

void KvUpdater::onReplayFinished(QNetworkReply* reply) {
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        qCInfo(lcUpdate) << "no update file:" << reply->errorString();
        return;
    }
    if (m_info.read(reply->readAll()))
        emit readUpdateInfo(&m_info);
}
