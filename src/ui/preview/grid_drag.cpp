#include "ui/preview/grid_drag.h"

#include <QApplication>
#include <QLabel>

namespace orvelle {

void GridDrag::press(int tile, const QPoint& at) {
    end();
    m_tile = tile;
    m_pressedAt = at;
}

void GridDrag::move(const QPoint& to, const std::function<QPixmap(int tile)>& pictureOf) {
    const bool isFar = (to - m_pressedAt).manhattanLength() >= QApplication::startDragDistance();
    if (m_tile >= 0 && !m_picture && isFar)
        showPicture(pictureOf(m_tile));
    if (m_picture)
        m_picture->move(to.x() - m_picture->width() / 2, to.y() - m_picture->height() / 2);
}

int GridDrag::release() {
    const int tile = m_picture ? m_tile : -1;
    delete m_picture;
    m_picture = nullptr;
    m_tile = -1;
    return tile;
}

void GridDrag::showPicture(const QPixmap& picture) {
    m_picture = new QLabel(m_ground);
    m_picture->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_picture->setPixmap(picture);
    m_picture->resize(picture.size());
    m_picture->show();
}

}  // namespace orvelle
