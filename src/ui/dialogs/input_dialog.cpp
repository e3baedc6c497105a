#include "ui/dialogs/input_dialog.h"

#include <QLineEdit>
#include <QPushButton>
#include <QtDebug>

#include "ui/palette.h"
#include "ui/widgets/name_width.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

KvInputDialog::KvInputDialog(const QString& title, const QString& placeholder, QWidget* parent)
    : orvelle::MessageDialog(parent), m_edit(new QLineEdit(this)) {
    m_edit->setAccessibleName(title);
    KvWidgetUtils::setUpLineEdit(m_edit, KvWidgetUtils::lineEditStyle(), placeholder);
    KvWidgetUtils::setFont(m_edit, orvelle::palette::kFontPixels);
    setButtonTexts(orvelle::text("ok"), orvelle::text("cancel"));
    setMessage(title);
    setBody(m_edit, orvelle::palette::kFieldHeight);
    m_edit->setFocus();
    connect(m_edit, &QLineEdit::textChanged, this, &KvInputDialog::_onEditTextChanged);
    connect(primaryButton(), &QPushButton::clicked, this, &KvInputDialog::_onClickOkButton);
    connect(secondaryButton(), &QPushButton::clicked, this, &KvInputDialog::_onClickCancelButton);
    connect(closeButton(), &QPushButton::clicked, this, &KvInputDialog::_onClickCloseButton);
}

void KvInputDialog::setMaxLength(int maximum) {
    m_maxLength = maximum;
    _onEditTextChanged(m_edit->text());
}

void KvInputDialog::setTextRequired(bool required) {
    m_textRequired = required;
    updateOkButton();
}

void KvInputDialog::setText(const QString& text) {
    m_edit->setText(text);
    m_edit->selectAll();
}

QString KvInputDialog::text() const {
    return m_edit->text();
}

void KvInputDialog::updateOkButton() {
    primaryButton()->setEnabled(!m_textRequired || !m_edit->text().trimmed().isEmpty());
}

void KvInputDialog::_onEditTextChanged(const QString&) {
    orvelle::cutToWidth(*m_edit, m_maxLength);
    updateOkButton();
}

void KvInputDialog::_onClickOkButton(bool) {
    accept();
}

void KvInputDialog::_onClickCancelButton(bool) {
    reject();
}

void KvInputDialog::_onClickCloseButton(bool) {
    reject();
}

void KvInputDialog::resizeEvent(QResizeEvent* event) {
    qDebug("KvInputDialog resize");
    MessageDialog::resizeEvent(event);
}
