#include "ui/widgets/notice_bar.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr int kGroundAlpha = 216;
constexpr int kRadius = 6;
constexpr int kMargin = 8;
constexpr int kPadding = 10;
constexpr int kMaxWidth = 560;
constexpr int kButtonHeight = 26;
constexpr int kButtonPadding = 12;

}  // namespace

NoticeBar::NoticeBar(QWidget* parent, int bottom)
    : KvWidget(parent),
      m_bottom(bottom),
      m_label(new QLabel(this)),
      m_button(new QPushButton(orvelle::text("i_known"), this)) {
    setAttribute(Qt::WA_NoMousePropagation);
    setBackgroundColor(QColor(0, 0, 0, kGroundAlpha));
    setBorder(0, kRadius);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setWordWrap(true);
    m_label->setStyleSheet(KvWidgetUtils::labelColorStyle(0xffffff));
    KvWidgetUtils::setFont(m_label, palette::kSmallFontPixels);
    m_button->setStyleSheet(KvWidgetUtils::primaryButtonStyle());
    m_button->setCursor(Qt::PointingHandCursor);
    m_button->setFocusPolicy(Qt::TabFocus);
    KvWidgetUtils::setFont(m_button, palette::kSmallFontPixels);
    connect(m_button, &QPushButton::clicked, this, &NoticeBar::dismiss);
    parent->installEventFilter(this);
    hide();
}

QString NoticeBar::text() const {
    return m_label->text();
}

void NoticeBar::add(const QString& text) {
    // One that was said already is not said twice.
    if (isHidden() || m_label->text().isEmpty())
        m_label->setText(text);
    else if (!m_label->text().contains(text))
        m_label->setText(m_label->text() + QStringLiteral("\n\n") + text);
    setAccessibleName(m_label->text());
    show();
    layOut();
    raise();
}

void NoticeBar::dismiss() {
    if (isHidden())
        return;
    // Else the toolkit hands the focus to the next widget, wherever that is.
    if (m_button->hasFocus())
        parentWidget()->setFocus(Qt::OtherFocusReason);
    hide();
    m_label->clear();
    emit dismissed();
}

bool NoticeBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && !isHidden())
        layOut();
    return KvWidget::eventFilter(watched, event);
}

void NoticeBar::layOut() {
    const QSize room = parentWidget()->size() - QSize(2 * kMargin, kMargin + m_bottom);
    const int buttonWidth =
        m_button->fontMetrics().horizontalAdvance(m_button->text()) + 2 * kButtonPadding;
    const int fixedWidth = 3 * kPadding + buttonWidth;
    const QFontMetrics metrics = m_label->fontMetrics();
    const QRect free(0, 0, qMax(1, qMin(kMaxWidth, room.width()) - fixedWidth), QWIDGETSIZE_MAX);
    const QSize textSize =
        metrics.boundingRect(free, Qt::TextWordWrap | Qt::TextWrapAnywhere, m_label->text()).size();
    const int labelWidth = qMin(free.width(), textSize.width() + kPadding);
    const int height = qMin(
        room.height(), qMax(m_label->heightForWidth(labelWidth), kButtonHeight) + 2 * kPadding);
    const int width = labelWidth + fixedWidth;
    setGeometry((parentWidget()->width() - width) / 2, parentWidget()->height() - m_bottom - height,
                width, height);
    m_label->setGeometry(kPadding, kPadding, labelWidth, height - 2 * kPadding);
    m_button->setGeometry(width - kPadding - buttonWidth, (height - kButtonHeight) / 2, buttonWidth,
                          kButtonHeight);
}

}  // namespace orvelle
