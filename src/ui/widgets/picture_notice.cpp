#include "ui/widgets/picture_notice.h"

#include <QLabel>
#include <QPushButton>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr QColor kDimGround(0, 0, 0, 136);
constexpr int kInset = 8;
constexpr int kGap = 8;
constexpr int kIconSize = 40;
constexpr QSize kTextPadding(12, 6);
constexpr QSize kButtonPadding(14, 7);

}  // namespace

PictureNotice::PictureNotice(QWidget* parent)
    : KvWidget(parent),
      m_icon(new QLabel(this)),
      m_label(new QLabel(this)),
      m_button(new QPushButton(text("retry"), this)) {
    m_label->setStyleSheet(QStringLiteral(
        "QLabel{background-color:rgba(0, 0, 0, 64);border-radius:10px;color:#ffffff;};"));
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setWordWrap(true);
    m_icon->setScaledContents(true);
    m_button->setStyleSheet(KvWidgetUtils::primaryButtonStyle());
    m_button->setCursor(Qt::PointingHandCursor);
    m_button->setFocusPolicy(Qt::TabFocus);
    m_button->hide();
    connect(m_button, &QPushButton::clicked, this, &PictureNotice::actionClicked);
    setFontPixels(palette::kFontPixels);
    hide();
}

void PictureNotice::setFontPixels(int pixels) {
    KvWidgetUtils::setFont(m_label, pixels);
    KvWidgetUtils::setFont(m_button, pixels);
    layOut();
}

void PictureNotice::setButtonText(const QString& words) {
    // Else the toolkit hands the focus to the next widget, wherever that is.
    if (words.isEmpty() && window()->focusWidget() == m_button) {
        QWidget* heir = parentWidget();
        while (heir && heir->focusPolicy() == Qt::NoFocus)
            heir = heir->parentWidget();
        if (heir)
            heir->setFocus(Qt::OtherFocusReason);
    }
    if (!words.isEmpty())
        m_button->setText(words);
    m_button->setVisible(!words.isEmpty());
}

void PictureNotice::setContent(const Content& content) {
    if (m_content == content)
        return;
    m_content = content;
    setBackgroundColor(content.isDimming ? kDimGround : QColor(0, 0, 0, 0));
    m_icon->setPixmap(content.icon.isEmpty() ? QPixmap()
                                             : QPixmap(KvWidgetUtils::image(content.icon)));
    m_label->setText(content.text);
    setButtonText(content.action);
    setVisible(!content.text.isEmpty());
    layOut();
}

void PictureNotice::resizeEvent(QResizeEvent*) {
    layOut();
}

/// From above: sign, text, button, all in the middle; what lacks room goes, the sign first.
void PictureNotice::layOut() {
    const QRect free = rect().adjusted(kInset, kInset, -kInset, -kInset);
    QSize lines =
        m_label->fontMetrics().boundingRect(free, Qt::TextWordWrap, m_label->text()).size();
    lines = (lines + 2 * kTextPadding).boundedTo(free.size());
    QSize button;
    if (!m_content.action.isEmpty()) {
        const QFontMetrics metrics = m_button->fontMetrics();
        button = QSize(metrics.horizontalAdvance(m_button->text()), metrics.height()) +
                 2 * kButtonPadding;
        button = button.boundedTo({free.width(), button.height()});
    }
    const int below = button.isEmpty() ? 0 : kGap + button.height();
    const bool hasIcon =
        !m_content.icon.isEmpty() && kIconSize + kGap + lines.height() + below <= free.height();
    const int above = hasIcon ? kIconSize + kGap : 0;
    int top = (height() - above - lines.height() - below) / 2;
    m_icon->setVisible(hasIcon);
    m_icon->setGeometry((width() - kIconSize) / 2, top, kIconSize, kIconSize);
    top += above;
    m_label->setGeometry(QRect(QPoint((width() - lines.width()) / 2, top), lines));
    m_button->setGeometry(
        QRect(QPoint((width() - button.width()) / 2, top + lines.height() + kGap), button));
}

}  // namespace orvelle
