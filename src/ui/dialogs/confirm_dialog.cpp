#include "ui/dialogs/confirm_dialog.h"

#include <QPushButton>

#include "ui/widgets/text.h"

KvConfirmDialog::KvConfirmDialog(const QString& message, QWidget* parent)
    : orvelle::MessageDialog(parent) {
    setButtonTexts(orvelle::text("confirm"), orvelle::text("cancel"));
    setMessage(message);
    connect(primaryButton(), &QPushButton::clicked, this, &KvConfirmDialog::_onClickOkButton);
    connect(secondaryButton(), &QPushButton::clicked, this, &KvConfirmDialog::_onClickCancelButton);
    connect(closeButton(), &QPushButton::clicked, this, &KvConfirmDialog::_onClickCloseButton);
}

void KvConfirmDialog::_onClickOkButton(bool) {
    accept();
}

void KvConfirmDialog::_onClickCancelButton(bool) {
    reject();
}

void KvConfirmDialog::_onClickCloseButton(bool) {
    reject();
}

void KvConfirmDialog::setConfirmText(const QString& text) {
    setButtonTexts(text, orvelle::text("cancel"));
}
