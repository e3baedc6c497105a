#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

#include "ui/info/device_info_view.h"
#include "ui/playback/sdcard_playback_view.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/devices_preview_ui.h"

// A tile is dragged onto another, and the two change places.

static constexpr QSize kDragSize(48, 27);

bool KvDevicesPreview::canDrag() const {
    return m_group && m_group->devices().size() > 1 &&
           m_group->type() != KvDeviceGroup::kSingleCamera && m_ui->infoView()->isHidden() &&
           m_ui->playbackView()->isHidden() && !m_ui->fullscreenTile() && m_ui->tilesShown() > 1;
}

void KvDevicesPreview::mousePressEvent(QMouseEvent* event) {
    endDrag();
    if (event->button() != Qt::LeftButton || !canDrag())
        return;
    m_pressPosition = event->pos();
    m_dragIndex = tileAt(m_pressPosition.x(), m_pressPosition.y());
}

void KvDevicesPreview::mouseMoveEvent(QMouseEvent* event) {
    if (m_isDragging)
        m_ui->moveDragLabel(event->pos());
    else if (m_dragIndex >= 0 && (event->pos() - m_pressPosition).manhattanLength() >=
                                     QApplication::startDragDistance())
        startDrag(event->pos());
}

void KvDevicesPreview::startDrag(const QPoint& position) {
    m_isDragging = true;
    QPixmap picture(kDragSize);
    {
        QPainter painter(&picture);
        paintTile(m_dragIndex, &painter, picture.rect());
    }
    m_ui->showDragLabel(picture, position);
}

void KvDevicesPreview::mouseReleaseEvent(QMouseEvent* event) {
    const int from = m_isDragging ? m_dragIndex : -1;
    endDrag();
    const int to = tileAt(event->pos().x(), event->pos().y());
    if (from >= 0 && to >= 0 && from != to)
        swapTiles(qMin(from, to), qMax(from, to));
}

void KvDevicesPreview::hideEvent(QHideEvent* event) {
    endDrag();
    QWidget::hideEvent(event);
}

void KvDevicesPreview::endDrag() {
    m_ui->removeDragLabel();
    m_dragIndex = -1;
    m_isDragging = false;
}

void KvDevicesPreview::swapTiles(int first, int second) {
    qDebug("mouseReleaseEvent swap(%d, %d)", first, second);
    if (!m_group->swapDevices(first, second))
        return;
    m_group->setThumbnailReady(false);
    reloadTiles();
    saveGroup();
    emit deviceGroupInfoChanged(m_group);
}
