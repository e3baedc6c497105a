#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QUrl>

class QNetworkReply;

namespace orvelle {

/// Fetches one file from the web. Interface thread.
///
/// What arrives goes to "<target>.tmp" at once, which becomes the target when all is there and,
/// where a checksum is given, right. Part of a file stays there for the next attempt to overwrite.
class FileDownloader : public QObject {
    Q_OBJECT

public:
    enum class Outcome {
        kNone,       ///< not yet, or cancelled
        kDone,       ///< the target is whole
        kFailed,     ///< the server cannot be reached or does not give the file
        kShort,      ///< it gave less than it announced
        kNotSaved,   ///< the disk is full or the folder cannot be written
        kWrongFile,  ///< the checksum differs; nothing is kept
    };

    explicit FileDownloader(QObject* parent = nullptr);
    ~FileDownloader() override;  ///< cancels

    /// A target that exists is good as it is, unless its checksum differs: then it is replaced.
    /// `sha256` is empty for none. Cancels what runs.
    void start(const QUrl& address, const QString& target, const QByteArray& sha256);
    /// Ends it without a signal.
    void cancel();
    Outcome outcome() const { return m_outcome; }

signals:
    /// Bytes; `total` is -1 when the server does not say.
    void progressed(qint64 received, qint64 total);
    /// outcome() says how. Only from the event loop.
    void finished();

private:
    void begin();
    void checkNextPart();
    void download();
    void takeArrived();
    void onReplyFinished();
    Outcome outcomeOfReply() const;
    Outcome keep();
    bool isRightSum() const;
    void end(Outcome outcome);

    QNetworkAccessManager m_manager;
    QPointer<QNetworkReply> m_reply;
    QUrl m_address;
    QString m_target;
    QByteArray m_sha256;
    QFile m_file;  ///< the temporary one; the target while that is checked
    QCryptographicHash m_sum{QCryptographicHash::Sha256};
    qint64 m_received = 0;
    qint64 m_total = -1;
    bool m_isRunning = false;
    Outcome m_outcome = Outcome::kNone;
};

}  // namespace orvelle
