#include "ui/preview/saving_dialog.h"

#include "ui/preview/recording_news.h"
#include "ui/widgets/text.h"

namespace orvelle {

SavingDialog::SavingDialog(QWidget* parent)
    : BusyDialog(orvelle::text("saving_the_recordings"), parent) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &QDialog::accept);
    connect(&RecordingNews::instance(), &RecordingNews::allEnded, this, &QDialog::accept);
}

void SavingDialog::run(int leftInset) {
    RecordingNews& news = RecordingNews::instance();
    if (news.pending() == 0)
        return;
    m_timer.start(static_cast<int>(news.endDeadline().remainingTime()));
    execCentred(leftInset);
}

}  // namespace orvelle
