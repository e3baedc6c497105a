#pragma once

#include "ui/dialogs/message_dialog.h"

/// A message to be agreed to: OK gives 1, cancel, close and Esc give 0.
class KvAlertDialog : public orvelle::MessageDialog {
    Q_OBJECT

public:
    KvAlertDialog(const QString& message, QWidget* parent);

    /// For news that leave no choice.
    void setCancelVisible(bool visible);
    /// For what cannot be undone: a verb on the button that does it, and Enter is Cancel.
    void setIrrevocable(const QString& verb);

private slots:
    void _onClickOkButton(bool);
    void _onClickCancelButton(bool);
    void _onClickCloseButton(bool);
};
