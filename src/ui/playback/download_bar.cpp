#include "ui/playback/download_bar.h"

#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <utility>

#include "ui/palette.h"
#include "ui/preview/recording_news.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

using State = CardDownload::State;

constexpr int kUpdateMs = 250;
constexpr int kMargin = 14;
constexpr int kGap = 12;
constexpr int kTextWidth = 260;
constexpr QSize kButtonSize(84, 26);
constexpr int kBarHeight = 8;
constexpr int kPerMille = 1000;
constexpr double kMegabyte = 1024.0 * 1024.0;

/// The cause, and where to find what could be kept.
QString failureText(const CardDownload& download) {
    const QString cause = recordingFaultText(download.fault());
    const bool isKept = !download.path().isEmpty();
    QStringList lines;
    if (!cause.isEmpty())
        lines << cause;
    if (isKept)
        lines << text("the_download_ended_early_it_is_saved_to")
              << QDir::toNativeSeparators(download.path());
    else if (cause.isEmpty())
        lines << text("the_download_could_not_be_saved");
    else
        lines << text("download_failed");
    return lines.join(QLatin1Char('\n'));
}

}  // namespace

DownloadBar::DownloadBar(QWidget* parent)
    : KvWidget(parent),
      m_text(new QLabel(this)),
      m_progress(new QProgressBar(this)),
      m_pause(new QPushButton(text("pause"), this)),
      m_cancel(new QPushButton(text("cancel"), this)) {
    setBackgroundColor(QColor(QLatin1String(palette::kBar)));
    m_text->setStyleSheet(QStringLiteral("QLabel{color:#ffffff;}"));
    m_text->setTextFormat(Qt::PlainText);
    m_progress->setRange(0, kPerMille);
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(text("download"));
    m_progress->setStyleSheet(
        QStringLiteral("QProgressBar{border:none;border-radius:4px;background:#5a5a5a;}"
                       "QProgressBar::chunk{border-radius:4px;background:%1;}")
            .arg(QLatin1String(palette::kAccent)));
    for (QPushButton* button : {m_pause, m_cancel}) {
        button->setStyleSheet(KvWidgetUtils::secondaryButtonStyle());
        button->setFocusPolicy(Qt::TabFocus);
        button->setCursor(Qt::PointingHandCursor);
        KvWidgetUtils::setFont(button, palette::kSmallFontPixels);
    }
    KvWidgetUtils::setFont(m_text, palette::kSmallFontPixels);
    m_timer.setInterval(kUpdateMs);
    connect(&m_timer, &QTimer::timeout, this, &DownloadBar::refresh);
    connect(m_pause, &QPushButton::clicked, this, &DownloadBar::togglePause);
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        m_download->stop();
        refresh();
    });
    hide();
}

void DownloadBar::start(KvTUTKDevice* device, std::vector<CardDownload::Stretch> stretches,
                        const QString& path) {
    stop();
    m_download = std::make_unique<CardDownload>(device, std::move(stretches), path);
    m_download->start();
    m_timer.start();
    show();
    showState();
}

void DownloadBar::stop() {
    m_timer.stop();
    if (m_download)
        m_download->detach();
    m_stopped.take(std::move(m_download));
    hide();
}

void DownloadBar::togglePause() {
    if (m_download->isPaused())
        m_download->resume();
    else
        m_download->pause();
    refresh();
}

void DownloadBar::refresh() {
    if (m_download->isOver())
        return end();
    showState();
}

void DownloadBar::showState() {
    m_progress->setValue(static_cast<int>(m_download->progress() * kPerMille));
    m_text->setText(stateText());
    m_pause->setText(m_download->isPaused() ? text("resume") : text("pause"));
}

QString DownloadBar::stateText() const {
    if (m_download->isStopped())
        return text("cancelling");
    if (m_download->isPaused())
        return text("download_paused");
    if (m_download->state() == State::kWaiting)
        return text("waiting_for_the_camera");
    return QStringLiteral("%1 %2 % · %3 MB")
        .arg(text("download"))
        .arg(static_cast<int>(m_download->progress() * 100))
        .arg(static_cast<double>(m_download->receivedBytes()) / kMegabyte, 0, 'f', 1);
}

/// Who hears of it may show a dialog, and this may be gone when that is answered.
void DownloadBar::end() {
    const std::unique_ptr<CardDownload> over = std::move(m_download);
    stop();
    emit ended();
    if (over->state() == State::kDone)
        emit done(over->path(), over->missingMinutes());
    else if (over->state() == State::kNotWritten)
        emit failed(failureText(*over));
    else if (over->state() == State::kNothing)
        emit failed(text("no_more_files"));
}

void DownloadBar::resizeEvent(QResizeEvent*) {
    const int buttonTop = (height() - kButtonSize.height()) / 2;
    m_text->setGeometry(kMargin, 0, kTextWidth, height());
    int right = width() - kMargin;
    for (QPushButton* button : {m_cancel, m_pause}) {
        button->setGeometry({{right - kButtonSize.width(), buttonTop}, kButtonSize});
        right -= kButtonSize.width() + kGap;
    }
    const int left = kMargin + kTextWidth + kGap;
    m_progress->setGeometry(left, (height() - kBarHeight) / 2, qMax(0, right - left), kBarHeight);
}

}  // namespace orvelle
