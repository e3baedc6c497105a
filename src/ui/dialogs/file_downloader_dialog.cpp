#include "ui/dialogs/file_downloader_dialog.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QtDebug>

#include <cmath>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::text;
using Outcome = orvelle::FileDownloader::Outcome;

namespace {

constexpr QSize kSize(400, 172);
constexpr QSize kFailedSize(400, 222);
constexpr QRect kCloseArea(366, 10, 24, 24);
constexpr QRect kTitleArea(40, 40, 320, 24);
constexpr QRect kMessageArea(24, 72, 352, 44);  // two lines
constexpr QRect kBarArea(24, 128, 352, 12);
constexpr int kRetryTop = 164;
constexpr int kWhole = 100;
// The last percent is the renaming.
constexpr double kMaxArrived = 0.99;

/// Why the server does not give the file.
QString reasonOf(const orvelle::FileDownloader& downloader) {
    switch (downloader.outcome()) {
        case Outcome::kMissing:
            return text("the_update_server_does_not_give_the_file").arg(downloader.httpStatus());
        case Outcome::kStalled:
            return text("the_update_server_sends_nothing_any_more");
        case Outcome::kUntrusted:
            return text("the_connection_to_the_update_server_is_not_safe");
        default:
            return text("the_update_server_cannot_be_reached");
    }
}

QString labelStyle(const char* colour) {
    return QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(colour));
}

}  // namespace

KvFileDownloaderDialog::KvFileDownloaderDialog(QWidget* parent, int stallMs)
    : KvDialog(parent),
      m_downloader(nullptr, stallMs),
      m_close(new QPushButton(this)),
      m_title(new QLabel(this)),
      m_message(new QLabel(this)),
      m_bar(new QProgressBar(this)),
      m_retry(new QPushButton(text("retry"), this)) {
    KvWidgetUtils::setUpImageButton(m_close, QStringLiteral("close"), "close");
    m_close->setAutoDefault(false);
    m_close->setGeometry(kCloseArea);
    setUpLabels();
    setUpBar();
    setUpRetry();
    using Dialog = KvFileDownloaderDialog;
    connect(m_close, &QPushButton::clicked, this, &Dialog::onClickCloseButton);
    connect(m_retry, &QPushButton::clicked, this, &Dialog::onClickRetryButton);
    connect(this, &Dialog::updateProgressSignal, this, &Dialog::onUpdateProgress);
    connect(this, &Dialog::cancelSignal, this, &Dialog::onCancel);
    connect(&m_downloader, &orvelle::FileDownloader::progressed, this, &Dialog::onDownloading);
    connect(&m_downloader, &orvelle::FileDownloader::finished, this, &Dialog::onReplayFinished);
}

void KvFileDownloaderDialog::setUpLabels() {
    using namespace orvelle::palette;
    m_title->setText(text("upgrading_to_the_latest_version"));
    setAccessibleName(m_title->text());
    m_title->setStyleSheet(QStringLiteral("QLabel{color:#000000;}"));
    m_title->setGeometry(kTitleArea);
    m_message->setWordWrap(true);
    m_message->setGeometry(kMessageArea);
    for (QLabel* label : {m_title, m_message}) {
        label->setAlignment(Qt::AlignCenter);
        KvWidgetUtils::setFont(label, kFontPixels);
    }
}

void KvFileDownloaderDialog::setUpBar() {
    m_bar->setRange(0, kWhole);
    m_bar->setValue(0);
    m_bar->setStyleSheet(
        QStringLiteral("QProgressBar {color:transparent;border: 1px solid #ffffff;"
                       "background-color: #f0f0f0;}"
                       "QProgressBar::chunk {background-color: #19a4ff;width: 20px;}"));
    m_bar->setTextVisible(false);
    m_bar->setGeometry(kBarArea);
    m_bar->setAccessibleName(text("downloading"));
}

void KvFileDownloaderDialog::setUpRetry() {
    KvWidgetUtils::setFont(m_retry, orvelle::palette::kFontPixels);
    m_retry->setStyleSheet(KvWidgetUtils::primaryButtonStyle());
    m_retry->setCursor(Qt::PointingHandCursor);
    m_retry->setDefault(true);
    m_retry->setGeometry((kFailedSize.width() - orvelle::palette::kButtonWidth) / 2, kRetryTop,
                         orvelle::palette::kButtonWidth, orvelle::palette::kButtonHeight);
}

int KvFileDownloaderDialog::download(const orvelle::Installer& installer, const QString& target,
                                     int leftInset) {
    m_installer = installer;
    m_target = target;
    begin();
    return execCentred(leftInset);
}

void KvFileDownloaderDialog::begin() {
    m_failure.clear();
    m_message->setText(text("downloading"));
    m_message->setStyleSheet(labelStyle(orvelle::palette::kAccentPressed));
    m_retry->hide();
    setFixedSize(kSize);
    m_downloader.start(m_installer, m_target);
}

void KvFileDownloaderDialog::reject() {
    const Outcome outcome = m_downloader.outcome();
    // What has ended keeps its outcome for the caller.
    if (outcome == Outcome::kNone)
        m_downloader.cancel();
    KvDialog::reject();
}

void KvFileDownloaderDialog::done(int result) {
    doneOnceActive(result);
}

void KvFileDownloaderDialog::onClickCloseButton(bool) {
    reject();
}

void KvFileDownloaderDialog::onClickRetryButton(bool) {
    begin();
}

void KvFileDownloaderDialog::onCancel() {
    reject();
}

void KvFileDownloaderDialog::onDownloading(qint64 received, qint64 total) {
    if (total > 0)
        emit updateProgressSignal(
            qMin(kMaxArrived, static_cast<double>(received) / static_cast<double>(total)));
    else
        m_bar->setRange(0, 0);
}

void KvFileDownloaderDialog::onUpdateProgress(double progress) {
    const int percent = static_cast<int>(std::lround(progress * kWhole));
    if (percent < 0) {
        fail(text("download_failed") + QLatin1Char('\n') +
             text("the_connection_was_cut_too_early"));
        return;
    }
    m_bar->setRange(0, kWhole);
    m_bar->setValue(percent);
    if (percent >= kWhole) {
        m_message->setText(text("download_success"));
        accept();
        return;
    }
    const QString message = QStringLiteral("%1...%2%").arg(text("downloading")).arg(percent);
    if (message == m_message->text())
        return;
    qDebug() << "msg =" << message;
    m_message->setText(message);
}

void KvFileDownloaderDialog::onReplayFinished() {
    switch (m_downloader.outcome()) {
        case Outcome::kDone:
            emit updateProgressSignal(1.0);
            break;
        case Outcome::kShort:
            emit updateProgressSignal(-1.0);
            break;
        case Outcome::kNotSaved:
            fail(text("the_download_could_not_be_saved"));
            break;
        case Outcome::kWrongFile:
            fail(text("the_downloaded_file_is_damaged_and_is_not_started"));
            break;
        default:
            m_failure = text("download_failed") + QLatin1Char('\n') + reasonOf(m_downloader);
            emit cancelSignal();
    }
}

void KvFileDownloaderDialog::fail(const QString& message) {
    m_message->setStyleSheet(labelStyle(orvelle::palette::kWarningText));
    m_message->setText(message);
    m_bar->setRange(0, kWhole);
    m_bar->setValue(0);
    setFixedSize(kFailedSize);
    m_retry->show();
    m_retry->setFocus();
}
