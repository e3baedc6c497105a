#pragma once

#include "ui/dialogs/message_dialog.h"

/// A question: confirm gives 1, cancel, close and Esc give 0.
class KvConfirmDialog : public orvelle::MessageDialog {
    Q_OBJECT

public:
    KvConfirmDialog(const QString& message, QWidget* parent);

    /// A verb in place of "confirm".
    void setConfirmText(const QString& text);

private slots:
    void _onClickOkButton(bool);
    void _onClickCancelButton(bool);
    void _onClickCloseButton(bool);
};
