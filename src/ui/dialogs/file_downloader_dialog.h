#pragma once

#include "ui/dialogs/dialog.h"
#include "update/file_downloader.h"

class QLabel;
class QProgressBar;
class QPushButton;

/// Shows an installer being downloaded. It closes by itself when the file is there (1) or the
/// server does not give it (0): failure() then says why. Other failures are told here, with the
/// choice to try again. Close and Esc end the download.
class KvFileDownloaderDialog : public KvDialog {
    Q_OBJECT

public:
    explicit KvFileDownloaderDialog(QWidget* parent = nullptr,
                                    int stallMs = orvelle::FileDownloader::kStallMs);

    /// Runs modally, centred as by execCentred().
    int download(const orvelle::Installer& installer, const QString& target, int leftInset = 0);
    /// What to tell the user after it has closed by itself without the file; else empty.
    QString failure() const { return m_failure; }
    /// By which the file is checked again before it is run; given after a download that gave 1.
    const std::optional<orvelle::InstallerProof>& proof() const { return m_downloader.proof(); }

    void reject() override;
    void done(int result) override;

signals:
    /// The share that is there; 1 when the file has its name, below 0 after a failure.
    void updateProgressSignal(double progress);
    void cancelSignal();

private slots:
    void onClickCloseButton(bool);
    void onClickRetryButton(bool);
    void onUpdateProgress(double progress);
    void onCancel();
    void onReplayFinished();
    void onDownloading(qint64 received, qint64 total);

private:
    void setUpLabels();
    void setUpBar();
    void setUpRetry();
    void begin();
    void fail(const QString& message);

    orvelle::FileDownloader m_downloader;
    orvelle::Installer m_installer;
    QString m_target;
    QString m_failure;
    QPushButton* m_close;  ///< children, as all below
    QLabel* m_title;
    QLabel* m_message;
    QProgressBar* m_bar;
    QPushButton* m_retry;  ///< after a failure that it tells
};
