#pragma once

#include <functional>

#include "ui/dialogs/message_dialog.h"

class QLabel;
class QLineEdit;

/// Asks for a line of text: OK gives 1 with the text; cancel, close and Esc give 0.
class KvInputDialog : public orvelle::MessageDialog {
    Q_OBJECT

public:
    KvInputDialog(const QString& title, const QString& placeholder, QWidget* parent);

    /// In the units of orvelle::nameWidth(); negative for no limit, as at first. Longer text is
    /// cut at once.
    void setMaxLength(int maximum);
    /// OK waits for a text that is more than blanks.
    void setTextRequired(bool required);
    /// OK gives the text to `check` and goes on when that has nothing to say; else the dialog stays
    /// and shows the reason.
    void setCheck(std::function<QString(const QString& text)> check) { m_check = std::move(check); }
    void setText(const QString& text);
    QString text() const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _onClickOkButton(bool);
    void _onClickCancelButton(bool);
    void _onClickCloseButton(bool);
    void _onEditTextChanged(const QString& text);

private:
    void updateOkButton();
    void showWarning(const QString& warning);

    QWidget* m_body;  ///< children
    QLineEdit* m_edit;
    QLabel* m_warning;
    std::function<QString(const QString& text)> m_check;
    int m_maxLength = -1;
    bool m_textRequired = false;
};
