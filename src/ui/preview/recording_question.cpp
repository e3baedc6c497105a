#include "ui/preview/recording_question.h"

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

bool mayEndRecordings(int count, QWidget* over) {
    if (count <= 0)
        return true;
    KvConfirmDialog question(runningRecordingsText(count), over->window());
    return question.execCentred(over) == QDialog::Accepted;
}

}  // namespace orvelle
