#include "ui/widgets/toast_view.h"

#include <QLabel>

#include "ui/widgets/widget_utils.h"

static constexpr int kRadius = 6;

KvToastView::KvToastView(QWidget* parent) : KvWidget(parent), m_label(new QLabel(this)) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setBorder(0, kRadius);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setAlignment(Qt::AlignCenter);
    setTextColor(0xffffff);
}

void KvToastView::setTextColor(unsigned rgb) {
    m_label->setStyleSheet(KvWidgetUtils::labelColorStyle(rgb));
}

void KvToastView::setText(const QString& text, int horizontalPadding, int verticalPadding,
                          int maxWidth) {
    m_label->setWordWrap(false);
    m_label->setText(text);
    QSize size = m_label->sizeHint();
    const int widest = qMax(1, maxWidth - 2 * horizontalPadding);
    if (size.width() > widest) {
        m_label->setWordWrap(true);
        size = QSize(widest, m_label->heightForWidth(widest));
    }
    m_label->setGeometry(QRect(QPoint(horizontalPadding, verticalPadding), size));
    resize(size + QSize(2 * horizontalPadding, 2 * verticalPadding));
}
