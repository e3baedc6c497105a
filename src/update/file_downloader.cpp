#include "update/file_downloader.h"

#include <QFileInfo>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QtDebug>

#include "update/installer_file.h"
#include "update/update_log.h"

namespace orvelle {

namespace {

constexpr int kTimeoutMs = 30'000;  // without a byte
constexpr qint64 kReadBufferBytes = 1 << 20;
constexpr qint64 kMaxBytes = qint64{2} << 30;
constexpr qint64 kChunkBytes = 64 * 1024;
constexpr qint64 kCheckedPartBytes = 4 << 20;  // a few milliseconds' work

QNetworkRequest requestFor(const QUrl& address) {
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    // The announced length is that of the file only when nothing is packed on the way.
    request.setRawHeader(QByteArrayLiteral("Accept-Encoding"), QByteArrayLiteral("identity"));
    request.setTransferTimeout(kTimeoutMs);
    return request;
}

bool isSuccess(const QNetworkReply& reply) {
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return status >= 200 && status < 300;
}

}  // namespace

FileDownloader::FileDownloader(QObject* parent) : QObject(parent) {}

FileDownloader::~FileDownloader() {
    cancel();
}

void FileDownloader::start(const QUrl& address, const QString& target, const QByteArray& sha256) {
    cancel();
    m_address = address;
    m_target = target;
    m_sha256 = sha256;
    m_isRunning = true;
    QTimer::singleShot(0, this, &FileDownloader::begin);
}

void FileDownloader::cancel() {
    m_isRunning = false;
    m_outcome = Outcome::kNone;
    m_file.close();
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    m_reply->abort();
    m_reply->deleteLater();
    m_reply.clear();
}

void FileDownloader::begin() {
    if (!m_isRunning || m_reply || m_file.isOpen())
        return;
    if (!QFileInfo(m_target).isFile()) {
        download();
    } else if (m_sha256.isEmpty()) {
        end(Outcome::kDone);
    } else {
        m_sum.reset();
        m_file.setFileName(m_target);
        if (m_file.open(QIODevice::ReadOnly))
            checkNextPart();
        else
            download();
    }
}

void FileDownloader::checkNextPart() {
    if (!m_isRunning || !m_file.isOpen())
        return;
    const QByteArray part = m_file.read(kCheckedPartBytes);
    m_sum.addData(part);
    if (!part.isEmpty()) {
        QTimer::singleShot(0, this, &FileDownloader::checkNextPart);
        return;
    }
    m_file.close();
    if (isRightSum()) {
        end(Outcome::kDone);
        return;
    }
    qCWarning(lcUpdate) << m_target << "does not have its checksum and is fetched anew";
    QFile::remove(m_target);
    download();
}

void FileDownloader::download() {
    m_sum.reset();
    m_received = 0;
    m_total = -1;
    m_file.setFileName(m_target + QStringLiteral(".tmp"));
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        end(Outcome::kNotSaved);
        return;
    }
    m_reply = m_manager.get(requestFor(m_address));
    qDebug() << "reply =" << m_reply.data();
    m_reply->setReadBufferSize(kReadBufferBytes);
    connect(m_reply, &QNetworkReply::readyRead, this, &FileDownloader::takeArrived);
    connect(m_reply, &QNetworkReply::finished, this, &FileDownloader::onReplyFinished);
}

void FileDownloader::takeArrived() {
    // What comes with an error is a page for people.
    if (!isSuccess(*m_reply))
        return;
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    m_total = length.isValid() ? length.toLongLong() : -1;
    while (m_reply->bytesAvailable() > 0) {
        if (m_received > kMaxBytes) {
            qCWarning(lcUpdate) << m_address << "gives more than an installer can be";
            end(Outcome::kFailed);
            return;
        }
        const QByteArray chunk = m_reply->read(kChunkBytes);
        if (m_file.write(chunk) != chunk.size()) {
            end(Outcome::kNotSaved);
            return;
        }
        m_sum.addData(chunk);
        m_received += chunk.size();
    }
    emit progressed(m_received, m_total);
}

void FileDownloader::onReplyFinished() {
    takeArrived();
    // Its end, or that of the dialog, may have been the answer to the progress.
    if (!m_isRunning)
        return;
    const Outcome outcome = outcomeOfReply();
    end(outcome == Outcome::kDone ? keep() : outcome);
}

FileDownloader::Outcome FileDownloader::outcomeOfReply() const {
    const QNetworkReply::NetworkError error = m_reply->error();
    const bool isCut =
        error == QNetworkReply::NoError || error == QNetworkReply::RemoteHostClosedError;
    qDebug("write %lld / %lld", static_cast<long long>(m_received),
           static_cast<long long>(m_total));
    if (isSuccess(*m_reply) && isCut &&
        (m_received < qMax<qint64>(1, m_total) || error != QNetworkReply::NoError))
        return Outcome::kShort;
    if (error == QNetworkReply::NoError && isSuccess(*m_reply))
        return Outcome::kDone;
    qCWarning(lcUpdate) << "download failed:" << m_reply->errorString();
    return Outcome::kFailed;
}

FileDownloader::Outcome FileDownloader::keep() {
    const bool isWritten = m_file.flush();
    m_file.close();
    if (!isWritten)
        return Outcome::kNotSaved;
    if (!isRightSum())
        return Outcome::kWrongFile;
    QFile::remove(m_target);
    if (!QFile::rename(m_file.fileName(), m_target))
        return Outcome::kNotSaved;
    allowToRun(m_target);
    return Outcome::kDone;
}

bool FileDownloader::isRightSum() const {
    return m_sha256.isEmpty() || m_sum.result() == m_sha256;
}

void FileDownloader::end(Outcome outcome) {
    cancel();
    m_outcome = outcome;
    const bool isUseless = outcome == Outcome::kNotSaved || outcome == Outcome::kWrongFile;
    if (isUseless)
        qCWarning(lcUpdate) << (outcome == Outcome::kNotSaved ? "cannot save" : "wrong checksum:")
                            << m_target;
    if (isUseless || (outcome != Outcome::kDone && m_received == 0))
        QFile::remove(m_file.fileName());
    emit finished();
}

}  // namespace orvelle
