#include "ui/widgets/animation_view.h"

#include <QPainter>

#include "core/log.h"

KvAnimationView::KvAnimationView(QWidget* parent) : QWidget(parent) {}

void KvAnimationView::setPixmap(const QPixmap& pixmap) {
    m_pixmap = pixmap;
    update();
}

void KvAnimationView::start() {
    m_timer = std::make_unique<QTimer>();
    connect(m_timer.get(), &QTimer::timeout, this, &KvAnimationView::_doAnimation);
    m_timer->start(m_interval);
}

void KvAnimationView::stop() {
    m_timer.reset();
    m_angle = 0.0;
    update();
}

void KvAnimationView::_doAnimation() {
    m_angle += m_step;
    update();
}

void KvAnimationView::paintEvent(QPaintEvent*) {
    if (m_pixmap.isNull())
        return;
    qCDebug(lcDebug, "pixmap = (%d, %d)", m_pixmap.width(), m_pixmap.height());
    const QPixmap rotated =
        m_pixmap.transformed(QTransform().rotate(m_angle), Qt::SmoothTransformation);
    const QRect centre(QPoint((rotated.width() - m_pixmap.width()) / 2,
                              (rotated.height() - m_pixmap.height()) / 2),
                       m_pixmap.size());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(rect(), rotated, centre);
}
