#include "update/updater.h"

#include <QNetworkReply>
#include <QNetworkRequest>

#include "update/file_sums.h"
#include "update/minisign.h"
#include "update/update_log.h"
#include "update/update_server.h"
#include "update/web_request.h"

namespace {

// Notes in two languages; a file beyond it is no update file.
constexpr qint64 kMaxBytes = 256 * 1024;
constexpr int kStallMs = 15'000;

}  // namespace

KvUpdater::KvUpdater(QObject* parent) : QObject(parent) {}

KvUpdater::~KvUpdater() = default;

void KvUpdater::start(const QString& address) {
    m_address = QUrl(QUrl::fromPercentEncoding(address.toUtf8()));
}

void KvUpdater::check(int flag) {
    if (!orvelle::isSafeAddress(m_address)) {
        qCWarning(lcUpdate) << "update server refused, it is not https:" << m_address;
        return;
    }
    // Answers to a former check are dropped with its manager.
    m_manager = std::make_unique<QNetworkAccessManager>();
    m_file.clear();
    m_signature.clear();
    connect(m_manager.get(), &QNetworkAccessManager::finished, this, &KvUpdater::onReplayFinished);
    QNetworkRequest request = orvelle::webRequest(m_address, kStallMs);
    if (flag == 1) {
        request.setHeader(QNetworkRequest::ContentTypeHeader,
                          QStringLiteral("application/x-www-form-urlencoded"));
        watch(m_manager->post(request, QByteArrayLiteral("check=version")));
    } else {
        watch(m_manager->get(request));
    }
    watch(m_manager->get(orvelle::webRequest(orvelle::signatureAddress(m_address), kStallMs)));
}

void KvUpdater::watch(QNetworkReply* reply) {
    reply->setReadBufferSize(2 * kMaxBytes);
    connect(reply, &QNetworkReply::readyRead, reply, [reply] {
        if (reply->bytesAvailable() > kMaxBytes)
            reply->abort();
    });
    orvelle::followSafely(*reply, [reply] { reply->abort(); });
}

void KvUpdater::onReplayFinished(QNetworkReply* reply) {
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        qCInfo(lcUpdate) << "no update file:" << reply->errorString();
        return;
    }
    const bool isFile = reply->request().url() == m_address;
    (isFile ? m_file : m_signature) = reply->readAll();
    if (m_file.isEmpty() || m_signature.isEmpty())
        return;
    if (!isGenuine())
        qCWarning(lcUpdate) << "update file refused: not signed with the key of this build";
    else if (m_info.read(m_file))
        emit readUpdateInfo(&m_info);
}

bool KvUpdater::isGenuine() const {
    const auto key = orvelle::updateKey();
    const auto signature = orvelle::MinisignSignature::parse(m_signature);
    orvelle::FileSums sums;
    sums.add(m_file);
    return key && signature && signature->isOf(m_address.fileName().toUtf8(), sums.blake2b(), *key);
}
