#include "ui/preview/grid_layout.h"

#include <array>
#include <cstdlib>
#include <utility>

namespace orvelle {

namespace {

/// Layouts that have a button, by the number of cameras that fit.
constexpr std::array kBySize{kGrid1x1, kGrid2x2, kGrid6, kGrid3x3, kGrid13, kGrid4x4};

constexpr int kBigTileOf6 = 0;
constexpr int kBigTileOf13 = 5;

/// Cells along a side; 0 for an unknown layout.
int cellsPerSide(int layout) {
    switch (layout) {
        case kGrid1x1:
            return 1;
        case kGrid2x2:
            return 2;
        case kGrid3x3:
        case kGrid6:
            return 3;
        case kGrid13:
        case kGrid4x4:
            return 4;
        case kGrid6x6:
            return 6;
        default:
            return 0;
    }
}

/// The tile that covers 2 x 2 cells, or -1.
int bigTile(int layout) {
    if (layout == kGrid6)
        return kBigTileOf6;
    return layout == kGrid13 ? kBigTileOf13 : -1;
}

}  // namespace

int tileCount(int layout) {
    const int cells = cellsPerSide(layout);
    return cells * cells - (bigTile(layout) < 0 ? 0 : 3);
}

int usableLayout(int stored, int cameras) {
    if (stored == kGrid6x6)
        return kGrid4x4;
    if (tileCount(stored) > 0 && cameras <= tileCount(stored))
        return stored;
    for (const int layout : kBySize)
        if (cameras <= tileCount(layout))
            return layout;
    return kGrid4x4;
}

std::vector<QRect> tilePlaces(int layout, const QSize& area) {
    const int side = cellsPerSide(layout);
    std::vector<QRect> places;
    if (side == 0)
        return places;
    const int cellWidth = area.width() / side;
    const int cellHeight = area.height() / side;
    QRect bigCells;
    for (int cell = 0; cell < side * side; ++cell) {
        const QPoint at(cell % side, cell / side);
        if (bigCells.contains(at))
            continue;
        const bool isBig = static_cast<int>(places.size()) == bigTile(layout);
        const QSize cells = isBig ? QSize(2, 2) : QSize(1, 1);
        if (isBig)
            bigCells = QRect(at, cells);
        places.emplace_back(at.x() * cellWidth, at.y() * cellHeight, cells.width() * cellWidth,
                            cells.height() * cellHeight);
    }
    return places;
}

int neighbourOf(const std::vector<QRect>& places, int from, GridDirection direction) {
    if (from < 0 || from >= static_cast<int>(places.size()))
        return -1;
    // Turned so that the way goes to the right.
    const auto turned = [direction](const QRect& place) {
        const bool isUpright = direction == GridDirection::kUp || direction == GridDirection::kDown;
        const QRect across =
            isUpright ? QRect(place.y(), place.x(), place.height(), place.width()) : place;
        const bool isBack = direction == GridDirection::kLeft || direction == GridDirection::kUp;
        return isBack ? QRect(-across.x() - across.width(), across.y(), across.width(),
                              across.height())
                      : across;
    };
    const QRect start = turned(places[static_cast<size_t>(from)]);
    int best = -1;
    std::pair<int, int> bestDistance;
    for (size_t i = 0; i < places.size(); ++i) {
        const QRect place = turned(places[i]);
        if (place.left() < start.left() + start.width() || place.bottom() < start.top() ||
            place.top() > start.bottom())
            continue;
        const std::pair distance(place.left(), std::abs(place.center().y() - start.center().y()));
        if (best < 0 || distance < bestDistance) {
            best = static_cast<int>(i);
            bestDistance = distance;
        }
    }
    return best;
}

}  // namespace orvelle
