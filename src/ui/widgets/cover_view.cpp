#include "ui/widgets/cover_view.h"

#include <QLabel>

#include "ui/palette.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr QColor kGround(0, 0, 0, 136);
constexpr int kPictureSize = 48;
constexpr int kGap = 12;
constexpr int kMargin = 8;

}  // namespace

CoverView::CoverView() : m_label(new QLabel(this)) {
    setBackgroundColor(kGround);
    m_label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setWordWrap(true);
    m_label->setStyleSheet(QStringLiteral("QLabel{color:#ffffff;};"));
    KvWidgetUtils::setFont(m_label, palette::kFontPixels);
}

void CoverView::setPicture(QWidget* picture) {
    m_picture = picture;
    layOut();
}

void CoverView::setText(const QString& text) {
    m_label->setText(text);
    layOut();
}

void CoverView::showOver(QWidget* parent, const QRect& area) {
    const QRect covered = area.isEmpty() ? parent->childrenRect() : area;
    setParent(parent);
    setGeometry(covered);
    show();
    raise();
    startMoving();
}

void CoverView::hideOver() {
    if (!isOver())
        return;
    hide();
    setParent(nullptr);
    stopMoving();
}

void CoverView::resizeEvent(QResizeEvent*) {
    layOut();
}

void CoverView::layOut() {
    const int textWidth = qMax(0, width() - 2 * kMargin);
    const int textHeight = m_label->text().isEmpty() ? 0 : m_label->heightForWidth(textWidth);
    const int gap = textHeight > 0 ? kGap : 0;
    // A small tile has no room for both at full size.
    const int size =
        qBound(0, qMin(kPictureSize, height() - textHeight - gap - 2 * kMargin), width());
    const int top = (height() - size - gap - textHeight) / 2;
    if (m_picture)
        m_picture->setGeometry((width() - size) / 2, top, size, size);
    m_label->setGeometry(kMargin, top + size + gap, textWidth, textHeight);
}

}  // namespace orvelle
