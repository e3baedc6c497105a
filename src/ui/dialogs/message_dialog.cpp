#include "ui/dialogs/message_dialog.h"

#include <QLabel>
#include <QPushButton>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr int kWidth = 400;
constexpr int kCloseSize = 24;
constexpr int kCloseMargin = 10;
constexpr int kMessageTop = 48;
constexpr int kGap = 20;
constexpr int kButtonGap = 16;
constexpr int kButtonPadding = 20;

}  // namespace

MessageDialog::MessageDialog(QWidget* parent)
    : KvDialog(parent),
      m_message(new QLabel(this)),
      m_primary(new QPushButton(this)),
      m_secondary(new QPushButton(this)),
      m_close(new QPushButton(this)) {
    m_message->setTextFormat(Qt::PlainText);
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    KvWidgetUtils::setFont(m_message, palette::kFontPixels);
    m_message->setStyleSheet(
        QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(palette::kText)));
    KvWidgetUtils::setUpImageButton(m_close, QStringLiteral("close"), "close");
    m_close->setAutoDefault(false);
    for (QPushButton* button : {m_primary, m_secondary}) {
        KvWidgetUtils::setFont(button, palette::kFontPixels);
        button->setCursor(Qt::PointingHandCursor);
    }
    m_primary->setStyleSheet(KvWidgetUtils::primaryButtonStyle());
    m_primary->setDefault(true);
    m_secondary->setStyleSheet(KvWidgetUtils::secondaryButtonStyle());
    fit();
}

void MessageDialog::setMessage(const QString& message) {
    m_message->setText(message);
    setAccessibleName(message);
    fit();
}

void MessageDialog::setButtonTexts(const QString& primary, const QString& secondary) {
    m_primary->setText(primary);
    m_secondary->setText(secondary);
    m_secondary->setVisible(!secondary.isEmpty());
    fit();
}

void MessageDialog::setBody(QWidget* body, int height) {
    m_body = body;
    m_bodyHeight = height;
    setTabOrder(body, m_primary);
    fit();
}

int MessageDialog::messageHeight() const {
    return m_message->heightForWidth(kWidth - 2 * palette::kDialogMargin);
}

void MessageDialog::fit() {
    int height =
        kMessageTop + messageHeight() + kGap + palette::kButtonHeight + palette::kDialogMargin;
    if (m_body)
        height += kGap + m_bodyHeight;
    setFixedSize(kWidth, height);
    layOut();
}

void MessageDialog::layOut() {
    const int inner = width() - 2 * palette::kDialogMargin;
    m_close->setGeometry(width() - kCloseMargin - kCloseSize, kCloseMargin, kCloseSize, kCloseSize);
    m_message->setGeometry(palette::kDialogMargin, kMessageTop, inner, messageHeight());
    if (m_body)
        m_body->setGeometry(palette::kDialogMargin, m_message->geometry().bottom() + 1 + kGap,
                            inner, m_bodyHeight);
    layOutButtons();
}

void MessageDialog::layOutButtons() {
    const bool both = !m_secondary->text().isEmpty();
    int buttonWidth = palette::kButtonWidth;
    for (const QPushButton* button : {m_primary, m_secondary}) {
        const int textWidth = button->fontMetrics().horizontalAdvance(button->text());
        buttonWidth = qMax(buttonWidth, textWidth + 2 * kButtonPadding);
    }
    const int all = both ? 2 * buttonWidth + kButtonGap : buttonWidth;
    const int left = (width() - all) / 2;
    const int top = height() - palette::kDialogMargin - palette::kButtonHeight;
    m_primary->setGeometry(left, top, buttonWidth, palette::kButtonHeight);
    m_secondary->setGeometry(left + buttonWidth + kButtonGap, top, buttonWidth,
                             palette::kButtonHeight);
}

void MessageDialog::resizeEvent(QResizeEvent*) {
    layOut();
}

}  // namespace orvelle
