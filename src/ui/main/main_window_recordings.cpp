#include "ui/main/main_window.h"
#include "ui/main/main_window_ui.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/recording_news.h"
#include "ui/preview/recording_question.h"
#include "ui/widgets/notice_bar.h"

// What came of recordings that nobody waited for.

namespace {

constexpr int kNoticeBottom = 16;
constexpr int kPathToastMs = 5000;  // a path takes longer to read

}  // namespace

void MainWindow::connectRecordings() {
    m_recordingNotice = new orvelle::NoticeBar(this, kNoticeBottom);
    connect(&orvelle::RecordingNews::instance(), &orvelle::RecordingNews::ready, this,
            &MainWindow::tellRecordings);
    // Of those that ended with the window before.
    orvelle::RecordingNews::instance().announce();
}

bool MainWindow::mayEndWhatRuns() {
    const KvDevicesPreview& preview = *m_ui->preview();
    return orvelle::mayEndRecordings(preview.runningRecordings(), this, preview.isDownloading());
}

/// A failure stays until the user has seen it.
void MainWindow::tellRecordings() {
    // Behind the question whether to close, or the program's end, nobody would read it.
    if (m_isClosing)
        return;
    const orvelle::RecordingNews::Message message =
        orvelle::RecordingNews::instance().takeMessage();
    if (message.text.isEmpty())
        return;
    if (message.isWarning)
        m_recordingNotice->add(message.text);
    else
        m_toast.show(this, message.text, KvToast::kBottomCentre, kPathToastMs);
}

void MainWindow::tellLastRecordings() {
    const orvelle::RecordingNews::Message message =
        orvelle::RecordingNews::instance().takeMessage();
    if (message.isWarning)
        inform(message.text);
}
