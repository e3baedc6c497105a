#include "ui/widgets/toast.h"

KvToast::KvToast(QObject* parent) : QObject(parent) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &KvToast::remove);
}

KvToast::~KvToast() {
    delete m_view;
}

void KvToast::setMargins(int horizontal, int vertical) {
    m_horizontalMargin = horizontal;
    m_verticalMargin = vertical;
}

void KvToast::setPaddings(int horizontal, int vertical) {
    m_horizontalPadding = horizontal;
    m_verticalPadding = vertical;
}

void KvToast::setColors(const QColor& background, unsigned textRgb) {
    m_backgroundColor = background;
    m_textRgb = textRgb;
}

void KvToast::show(QWidget* parent, const QString& text, int placement, int ms) {
    remove();
    m_view = new KvToastView(parent);
    m_view->setBackgroundColor(m_backgroundColor);
    m_view->setTextColor(m_textRgb);
    m_view->setText(text, m_horizontalPadding, m_verticalPadding,
                    parent->width() - 2 * m_horizontalMargin);
    m_view->move(positionOf(m_view->size(), parent->size(), placement));
    m_view->show();
    m_view->raise();
    m_timer.start(ms);
}

QPoint KvToast::positionOf(const QSize& size, const QSize& parent, int placement) const {
    QPoint position((parent.width() - size.width()) / 2,
                    parent.height() - m_verticalMargin - size.height());
    if (placement & kLeft)
        position.setX(m_horizontalMargin);
    else if (placement & kRight)
        position.setX(parent.width() - m_horizontalMargin - size.width());
    if (placement & kTop)
        position.setY(m_verticalMargin);
    else if (placement & kMiddle)
        position.setY((parent.height() - size.height()) / 2);
    return position;
}

void KvToast::remove() {
    m_timer.stop();
    if (!m_view)
        return;
    m_view->hide();
    m_view->deleteLater();
    m_view = nullptr;
}
