#include "update/file_downloader.h"

#include <QFileInfo>
#include <QNetworkReply>
#include <QTimer>
#include <QtDebug>

#include "update/installer_thread.h"
#include "update/update_log.h"
#include "update/update_server.h"
#include "update/web_request.h"

namespace orvelle {

namespace {

constexpr qint64 kReadBufferBytes = 1 << 20;
constexpr qint64 kMaxBytes = qint64{2} << 30;
constexpr qint64 kChunkBytes = 64 * 1024;

int httpStatusOf(const QNetworkReply& reply) {
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

bool isSuccess(const QNetworkReply& reply) {
    const int status = httpStatusOf(reply);
    return status >= 200 && status < 300;
}

}  // namespace

FileDownloader::FileDownloader(QObject* parent, int stallMs)
    : QObject(parent), m_stallMs(stallMs) {}

FileDownloader::~FileDownloader() {
    cancel();
}

void FileDownloader::start(const Installer& installer, const QString& target) {
    cancel();
    m_installer = installer;
    m_target = target;
    m_proof.reset();
    m_received = 0;
    m_total = -1;
    m_httpStatus = 0;
    m_isRunning = true;
    QTimer::singleShot(0, this, &FileDownloader::fetchSignature);
}

void FileDownloader::cancel() {
    m_isRunning = false;
    m_outcome = Outcome::kNone;
    m_file.close();
    m_check.reset();
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    m_reply->abort();
    m_reply->deleteLater();
    m_reply.clear();
}

void FileDownloader::fetchSignature() {
    if (!m_isRunning || m_reply || m_check || m_proof)
        return;
    get(signatureAddress(m_installer.address));
    connect(m_reply, &QNetworkReply::readyRead, this, [this] {
        if (m_reply->bytesAvailable() > MinisignSignature::kMaxFileBytes)
            end(Outcome::kWrongFile);
    });
    connect(m_reply, &QNetworkReply::finished, this, &FileDownloader::onSignatureArrived);
}

void FileDownloader::get(const QUrl& address) {
    m_reply = m_manager.get(webRequest(address, m_stallMs));
    qDebug() << "reply =" << m_reply.data();
    m_reply->setReadBufferSize(kReadBufferBytes);
    followSafely(*m_reply, [this] { end(Outcome::kUntrusted); });
}

void FileDownloader::onSignatureArrived() {
    const QByteArray body = m_reply->readAll();
    m_received = body.size();
    const Outcome outcome = outcomeOfReply();
    if (outcome != Outcome::kDone) {
        end(outcome);
        return;
    }
    const auto signature = MinisignSignature::parse(body);
    const auto key = updateKey();
    if (!signature || !key) {
        end(Outcome::kWrongFile);
        return;
    }
    m_reply->deleteLater();
    m_reply.clear();
    m_proof = InstallerProof{m_installer.address.fileName().toUtf8(), m_installer.sha256,
                             *signature, *key};
    if (!QFileInfo(m_target).isFile()) {
        download();
        return;
    }
    m_check = std::make_unique<InstallerThread>(m_target, *m_proof, InstallerThread::Task::kCheck);
    connect(m_check.get(), &QThread::finished, this, &FileDownloader::onExistingChecked);
    m_check->start();
}

void FileDownloader::onExistingChecked() {
    // It may be news of one that was cancelled meanwhile.
    if (!m_check || !m_check->isFinished())
        return;
    m_check->waitForEnd();
    const bool isGenuine = m_check->outcome() == InstallerThread::Outcome::kGenuine;
    m_check.reset();
    if (isGenuine) {
        allowToRun(m_target);
        end(Outcome::kDone);
        return;
    }
    QFile::remove(m_target);
    download();
}

void FileDownloader::download() {
    m_sums.reset();
    m_received = 0;
    m_total = -1;
    m_file.setFileName(m_target + QStringLiteral(".tmp"));
    // Whatever has that name, such as a link, is not written through.
    QFile::remove(m_file.fileName());
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly) ||
        !m_file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)) {
        end(Outcome::kNotSaved);
        return;
    }
    get(m_installer.address);
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
            qCWarning(lcUpdate) << m_installer.address << "gives more than an installer can be";
            end(Outcome::kWrongFile);
            return;
        }
        const QByteArray chunk = m_reply->read(kChunkBytes);
        if (m_file.write(chunk) != chunk.size()) {
            end(Outcome::kNotSaved);
            return;
        }
        m_sums.add(chunk);
        m_received += chunk.size();
    }
    emit progressed(m_received, m_total);
}

void FileDownloader::onReplyFinished() {
    takeArrived();
    // Its end, or that of the dialog, may have been the answer to the progress.
    if (!m_isRunning || !m_reply)
        return;
    qDebug("write %lld / %lld", static_cast<long long>(m_received),
           static_cast<long long>(m_total));
    const Outcome outcome = outcomeOfReply();
    end(outcome == Outcome::kDone ? keep() : outcome);
}

FileDownloader::Outcome FileDownloader::outcomeOfReply() {
    const QNetworkReply::NetworkError error = m_reply->error();
    m_httpStatus = httpStatusOf(*m_reply);
    const bool isWhole = m_received > 0 && m_received >= m_total;
    if (error == QNetworkReply::NoError && isSuccess(*m_reply))
        return isWhole ? Outcome::kDone : Outcome::kShort;
    qCWarning(lcUpdate) << "download failed:" << m_reply->errorString();
    if (error == QNetworkReply::OperationCanceledError)
        return Outcome::kStalled;
    // A redirection to something that is not even the web is the second.
    if (error == QNetworkReply::SslHandshakeFailedError ||
        error == QNetworkReply::ProtocolUnknownError)
        return Outcome::kUntrusted;
    if (error == QNetworkReply::RemoteHostClosedError && isSuccess(*m_reply))
        return Outcome::kShort;
    return m_httpStatus > 0 && !isSuccess(*m_reply) ? Outcome::kMissing : Outcome::kUnreachable;
}

FileDownloader::Outcome FileDownloader::keep() {
    const bool isWritten = m_file.flush();
    m_file.close();
    if (!isWritten)
        return Outcome::kNotSaved;
    if (!m_proof->isOf(m_sums))
        return Outcome::kWrongFile;
    QFile::remove(m_target);
    if (!QFile::rename(m_file.fileName(), m_target))
        return Outcome::kNotSaved;
    allowToRun(m_target);
    return Outcome::kDone;
}

void FileDownloader::end(Outcome outcome) {
    cancel();
    m_outcome = outcome;
    const bool isUseless = outcome == Outcome::kNotSaved || outcome == Outcome::kWrongFile;
    if (isUseless)
        qCWarning(lcUpdate) << (outcome == Outcome::kNotSaved ? "cannot save" : "not genuine:")
                            << m_target;
    if (isUseless || (outcome != Outcome::kDone && m_received == 0))
        QFile::remove(m_file.fileName());
    emit finished();
}

}  // namespace orvelle
