#include "ui/dialogs/input_dialog.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtDebug>

#include "ui/palette.h"
#include "ui/widgets/name_width.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kWarningGap = 8;

}  // namespace

KvInputDialog::KvInputDialog(const QString& title, const QString& placeholder, QWidget* parent)
    : orvelle::MessageDialog(parent),
      m_body(new QWidget(this)),
      m_edit(new QLineEdit(m_body)),
      m_warning(new QLabel(m_body)) {
    using namespace orvelle::palette;
    m_warning->setTextFormat(Qt::PlainText);
    m_warning->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_warning->setWordWrap(true);
    m_warning->setStyleSheet(QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(kWarningText)));
    KvWidgetUtils::setFont(m_warning, kSmallFontPixels);
    m_edit->setAccessibleName(title);
    KvWidgetUtils::setUpLineEdit(m_edit, KvWidgetUtils::lineEditStyle(), placeholder);
    KvWidgetUtils::setFont(m_edit, kFontPixels);
    setButtonTexts(orvelle::text("ok"), orvelle::text("cancel"));
    setMessage(title);
    showWarning({});
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

void KvInputDialog::showWarning(const QString& warning) {
    using namespace orvelle::palette;
    m_warning->setText(warning);
    m_edit->setAccessibleDescription(warning);
    const int width = this->width() - 2 * kDialogMargin;
    const int height = warning.isEmpty() ? 0 : m_warning->heightForWidth(width);
    m_edit->setGeometry(0, 0, width, kFieldHeight);
    m_warning->setGeometry(0, kFieldHeight + kWarningGap, width, height);
    setBody(m_body, kFieldHeight + (height > 0 ? kWarningGap + height : 0));
    setTabOrder(m_edit, primaryButton());
}

void KvInputDialog::_onEditTextChanged(const QString&) {
    if (!m_warning->text().isEmpty())
        showWarning({});
    orvelle::cutToWidth(*m_edit, m_maxLength);
    updateOkButton();
}

void KvInputDialog::_onClickOkButton(bool) {
    const QString warning = m_check ? m_check(text()) : QString();
    if (warning.isEmpty()) {
        accept();
        return;
    }
    showWarning(warning);
    m_edit->setFocus();
    m_edit->selectAll();
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
