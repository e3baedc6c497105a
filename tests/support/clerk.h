#pragma once

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QScreen>
#include <QStringList>
#include <QThread>

#include "ui/dialogs/alert_dialog.h"
#include "ui/dialogs/confirm_dialog.h"
#include "ui/dialogs/input_dialog.h"

namespace orvelle::test {

/// Closes the modal dialogs that come up, and remembers of which kind they were.
class Clerk : public QObject {
public:
    Clerk() { qApp->installEventFilter(this); }
    QStringList seen;
    QStringList questions;   ///< what the questions among them asked
    bool isAgreeing = true;  ///< to questions
    QString typed;           ///< into a dialog that asks for a line; empty: it is cancelled

    bool eventFilter(QObject* shown, QEvent* event) override {
        auto* dialog = event->type() == QEvent::Show ? qobject_cast<QDialog*>(shown) : nullptr;
        if (!dialog)
            return false;
        seen.append(QLatin1String(dialog->metaObject()->className()));
        const bool isQuestion = qobject_cast<KvAlertDialog*>(dialog) != nullptr ||
                                qobject_cast<KvConfirmDialog*>(dialog) != nullptr;
        if (isQuestion)
            questions.append(dialog->accessibleName());
        auto* input = qobject_cast<KvInputDialog*>(dialog);
        if (input && !typed.isEmpty())
            input->setText(typed);
        const bool isAccepted = isQuestion ? isAgreeing : input && !typed.isEmpty();
        // Later: the dialog's own loop has not begun.
        QMetaObject::invokeMethod(
            dialog, [dialog, isAccepted] { isAccepted ? dialog->accept() : dialog->reject(); },
            Qt::QueuedConnection);
        return false;
    }
};

}  // namespace orvelle::test
