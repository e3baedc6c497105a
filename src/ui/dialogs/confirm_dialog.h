#pragma once

#include "ui/dialogs/message_dialog.h"

/// A question: confirm gives 1, cancel, close and Esc give 0.
class KvConfirmDialog : public orvelle::MessageDialog {
    Q_OBJECT

public:
    KvConfirmDialog(const QString& message, QWidget* parent);

private slots:
    void _onClickOkButton(bool);
    void _onClickCancelButton(bool);
    void _onClickCloseButton(bool);
};
