#include "ui/preview/recording_question.h"

#include <QStringList>
#include <QWidget>

#include "ui/dialogs/confirm_dialog.h"
#include "ui/widgets/text.h"

namespace orvelle {

QString runningRecordingsText(int count) {
    if (count <= 0)
        return {};
    return count == 1 ? text("a_recording_is_running_and_ends_now")
                      : text("recordings_are_running_and_end_now").arg(count);
}

QString endingText(int recordings, bool isDownloading) {
    QStringList lines;
    if (recordings > 0)
        lines << runningRecordingsText(recordings);
    if (isDownloading)
        lines << text("a_download_is_running_and_is_cancelled");
    return lines.join(QLatin1Char('\n'));
}

bool mayEndRecordings(int count, QWidget* over, bool isDownloading) {
    const QString ending = endingText(count, isDownloading);
    if (ending.isEmpty())
        return true;
    KvConfirmDialog question(ending, over->window());
    return question.execCentred(over) == QDialog::Accepted;
}

}  // namespace orvelle
