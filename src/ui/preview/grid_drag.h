#pragma once

#include <QPixmap>
#include <QPoint>

#include <functional>

class QLabel;
class QWidget;

namespace orvelle {

/// A tile of a grid that is dragged with the mouse: from the press on it waits until the mouse has
/// moved far enough, and then shows the tile's picture at the mouse. Interface thread.
class GridDrag {
public:
    /// `ground` carries the picture, and outlives this.
    explicit GridDrag(QWidget* ground) : m_ground(ground) {}

    /// -1: no tile is there, or none may be dragged.
    void press(int tile, const QPoint& at);
    /// `pictureOf` is asked once, when the drag begins.
    void move(const QPoint& to, const std::function<QPixmap(int tile)>& pictureOf);
    /// Ends it: the tile that was dragged, or -1.
    int release();
    /// Ends it without a result.
    void end() { release(); }

private:
    void showPicture(const QPixmap& picture);

    QWidget* const m_ground;
    int m_tile = -1;
    QPoint m_pressedAt;
    QLabel* m_picture = nullptr;  ///< child of the ground, only while a tile is dragged
};

}  // namespace orvelle
