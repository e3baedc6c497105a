#pragma once

#include <QTimer>

#include "ui/dialogs/busy_dialog.h"

namespace orvelle {

/// Says that recordings are still being written to their disk, until they are or it has been
/// given long enough. Interface thread.
class SavingDialog : public BusyDialog {
    Q_OBJECT

public:
    /// What a disk that hangs may hold up the end of the program.
    static constexpr int kMaxWaitMs = 10'000;

    explicit SavingDialog(QWidget* parent = nullptr);

    /// Returns at once when nothing is being written.
    void run(int leftInset);

private:
    QTimer m_timer;
};

}  // namespace orvelle
