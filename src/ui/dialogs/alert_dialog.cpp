#include "ui/dialogs/alert_dialog.h"

#include <QPushButton>

#include "ui/widgets/text.h"

KvAlertDialog::KvAlertDialog(const QString& message, QWidget* parent)
    : orvelle::MessageDialog(parent) {
    setButtonTexts(orvelle::text("ok"), orvelle::text("cancel"));
    setMessage(message);
    connect(primaryButton(), &QPushButton::clicked, this, &KvAlertDialog::_onClickOkButton);
    connect(secondaryButton(), &QPushButton::clicked, this, &KvAlertDialog::_onClickCancelButton);
    connect(closeButton(), &QPushButton::clicked, this, &KvAlertDialog::_onClickCloseButton);
}

void KvAlertDialog::_onClickOkButton(bool) {
    accept();
}

void KvAlertDialog::_onClickCancelButton(bool) {
    reject();
}

void KvAlertDialog::_onClickCloseButton(bool) {
    reject();
}

void KvAlertDialog::setCancelVisible(bool visible) {
    setButtonTexts(orvelle::text("ok"), visible ? orvelle::text("cancel") : QString());
}

void KvAlertDialog::setIrrevocable(const QString& verb) {
    setButtonTexts(verb, orvelle::text("cancel"));
    secondaryButton()->setDefault(true);
    secondaryButton()->setFocus(Qt::OtherFocusReason);
}
