#include "ui/main/menu_label.h"

#include <QKeyEvent>
#include <QLabel>
#include <QtDebug>

#include "ui/palette.h"
#include "ui/widgets/widget.h"
#include "ui/widgets/widget_utils.h"

using namespace orvelle;

namespace {

constexpr unsigned kLineColor = 0xdddddd;
constexpr int kArrowSize = 12;
constexpr int kArrowMargin = 6;

}  // namespace

KvMenuLabel::KvMenuLabel(const QString& text, QWidget* parent)
    : QWidget(parent),
      m_lines(new KvWidget(this)),
      m_text(new QLabel(text, this)),
      m_arrow(new QLabel(this)) {
    m_lines->setBackgroundColor(kLineColor, 255);
    KvWidgetUtils::setFont(m_text, palette::kSmallFontPixels);
    m_text->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_arrow->setStyleSheet(
        KvWidgetUtils::labelImageStyle(KvWidgetUtils::image(QStringLiteral("list_drop_down"))));
    m_arrow->hide();
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(text);
    applyStyle();
}

void KvMenuLabel::setArrowVisible(bool visible) {
    m_arrow->setVisible(visible);
}

void KvMenuLabel::setCentred(bool centred) {
    m_text->setAlignment(Qt::AlignVCenter | (centred ? Qt::AlignHCenter : Qt::AlignLeft));
}

void KvMenuLabel::setEdges(const QMargins& edges) {
    m_edges = edges;
    m_text->setGeometry(rect().marginsRemoved(m_edges));
}

void KvMenuLabel::setFlag(int flag) {
    m_flag = flag;
    applyStyle();
}

void KvMenuLabel::applyStyle() {
    const char* color = m_flag ? palette::kAccentPressed : "#666666";
    m_text->setStyleSheet(
        QStringLiteral("QLabel{color:%1;background:%3;padding:0 8px;}QLabel:hover{"
                       "background:%2;}")
            .arg(QLatin1String(color), QLatin1String(palette::kAccentTint),
                 QLatin1String(hasFocus() ? palette::kAccentTint : "#ffffff")));
}

// There is no room for a ring between the entries.
void KvMenuLabel::focusInEvent(QFocusEvent*) {
    applyStyle();
}

void KvMenuLabel::focusOutEvent(QFocusEvent*) {
    applyStyle();
}

void KvMenuLabel::resizeEvent(QResizeEvent*) {
    m_lines->setGeometry(rect());
    m_text->setGeometry(rect().marginsRemoved(m_edges));
    m_arrow->setGeometry(width() - kArrowMargin - kArrowSize, (height() - kArrowSize) / 2,
                         kArrowSize, kArrowSize);
}

void KvMenuLabel::mousePressEvent(QMouseEvent*) {}

void KvMenuLabel::mouseReleaseEvent(QMouseEvent*) {
    qDebug("click");
    emit click();
}

void KvMenuLabel::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space)
        emit click();
    else
        QWidget::keyPressEvent(event);
}
