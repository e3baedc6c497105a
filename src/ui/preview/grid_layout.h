#pragma once

#include <QRect>

#include <vector>

namespace orvelle {

/// The arrangements of the preview grid; the numbers are those that groups are stored with.
enum GridLayout {
    kGrid1x1 = 0,
    kGrid2x2 = 1,
    kGrid3x3 = 2,
    kGrid6 = 3,   ///< one big tile at the top left
    kGrid13 = 4,  ///< one big tile in the middle
    kGrid4x4 = 5,
    kGrid6x6 = 6,  ///< may stand in a group; the grid shows it as 4 x 4
};

constexpr int kMaxTiles = 16;

/// How many cameras fit; 0 for an unknown layout.
int tileCount(int layout);

/// `stored` when it is one that the grid can show and `cameras` fit, else the smallest that does.
int usableLayout(int stored, int cameras);

/// The tiles' places in an area at (0, 0), in the order of the cameras. Cells have whole pixels,
/// so the last column and row leave up to three pixels free. Empty for an unknown layout.
std::vector<QRect> tilePlaces(int layout, const QSize& area);

/// In the order of the keys.
enum class GridDirection { kLeft, kRight, kUp, kDown };

/// The place that lies next to another one, as near to its middle line as may be; -1 at the edge.
int neighbourOf(const std::vector<QRect>& places, int from, GridDirection direction);

}  // namespace orvelle
