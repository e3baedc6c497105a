#pragma once

#include "ui/dialogs/dialog.h"
#include "update/file_downloader.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QUrl;

/// Shows a file being downloaded. It closes by itself when the file is there (1) or the server does
/// not give it (0); other failures are told and wait for the user. Close and Esc end the download.
class KvFileDownloaderDialog : public KvDialog {
    Q_OBJECT

public:
    explicit KvFileDownloaderDialog(QWidget* parent = nullptr);

    /// Runs modally, centred as by execCentred(). `sha256` is empty for none.
    int download(const QUrl& address, const QString& target, const QByteArray& sha256,
                 int leftInset = 0);
    orvelle::FileDownloader::Outcome outcome() const { return m_downloader.outcome(); }

    void reject() override;
    void done(int result) override;

signals:
    /// The share that is there; 1 when the file has its name, below 0 after a failure.
    void updateProgressSignal(double progress);
    void cancelSignal();

private slots:
    void onClickCloseButton(bool);
    void onUpdateProgress(double progress);
    void onCancel();
    void onReplayFinished();
    void onDownloading(qint64 received, qint64 total);

private:
    void setUpLabels();
    void setUpBar();
    void fail(const QString& message);

    orvelle::FileDownloader m_downloader;
    QPushButton* m_close;  ///< children, as all below
    QLabel* m_title;
    QLabel* m_message;
    QProgressBar* m_bar;
};
