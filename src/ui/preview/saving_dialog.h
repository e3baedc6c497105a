#pragma once

#include <QTimer>

#include "ui/dialogs/busy_dialog.h"

namespace orvelle {

/// Says that recordings are still being written to their disk, until they are or the end
/// of the program has been held up for long enough. Interface thread.
class SavingDialog : public BusyDialog {
    Q_OBJECT

public:
    explicit SavingDialog(QWidget* parent = nullptr);

    /// Returns at once when nothing is being written.
    void run(int leftInset);

private:
    QTimer m_timer;
};

}  // namespace orvelle
