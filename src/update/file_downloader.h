#pragma once

#include <QFile>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QUrl>

#include <memory>
#include <optional>

#include "update/file_sums.h"
#include "update/installer.h"

class QNetworkReply;

namespace orvelle {

class InstallerThread;

/// Fetches an installer from the web, its signature first. Interface thread.
///
/// What arrives goes to "<target>.tmp" at once, which becomes the target when all is there and
/// proves to be what the maintainer signed. Part of a file stays there for the next attempt to
/// overwrite.
class FileDownloader : public QObject {
    Q_OBJECT

public:
    enum class Outcome {
        kNone,         ///< not yet, or cancelled
        kDone,         ///< the target is whole and genuine
        kUnreachable,  ///< the server, or the way to it, is not there
        kUntrusted,    ///< it does not prove who it is, or leads to an address that is not safe
        kMissing,      ///< it does not give the file or its signature; httpStatus() says why
        kStalled,      ///< it gave nothing for too long
        kShort,        ///< it gave less than it announced
        kNotSaved,     ///< the disk is full or the folder cannot be written
        kWrongFile,    ///< not what the maintainer signed; nothing is kept
    };

    static constexpr int kStallMs = 20'000;  ///< without a byte

    explicit FileDownloader(QObject* parent = nullptr, int stallMs = kStallMs);
    ~FileDownloader() override;  ///< cancels

    /// A target that exists and proves right is good as it is; any other is replaced. Cancels what
    /// runs.
    void start(const Installer& installer, const QString& target);
    /// Ends it without a signal.
    void cancel();
    Outcome outcome() const { return m_outcome; }
    /// What the server answered last; 0 before.
    int httpStatus() const { return m_httpStatus; }
    /// By which the target is checked again; given when it is done.
    const std::optional<InstallerProof>& proof() const { return m_proof; }

signals:
    /// Bytes; `total` is -1 when the server does not say.
    void progressed(qint64 received, qint64 total);
    /// outcome() says how. Only from the event loop.
    void finished();

private:
    void fetchSignature();
    void get(const QUrl& address);
    void onSignatureArrived();
    void onExistingChecked();
    void download();
    void takeArrived();
    void onReplyFinished();
    Outcome outcomeOfReply();
    Outcome keep();
    void end(Outcome outcome);

    const int m_stallMs;
    QNetworkAccessManager m_manager;
    QPointer<QNetworkReply> m_reply;
    std::unique_ptr<InstallerThread> m_check;  ///< of a target that exists
    Installer m_installer;
    QString m_target;
    std::optional<InstallerProof> m_proof;
    QFile m_file;  ///< the temporary one
    FileSums m_sums;
    qint64 m_received = 0;
    qint64 m_total = -1;
    int m_httpStatus = 0;
    bool m_isRunning = false;
    Outcome m_outcome = Outcome::kNone;
};

}  // namespace orvelle
