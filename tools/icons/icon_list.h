#pragma once

#include <QColor>
#include <QSize>
#include <QString>

#include <optional>
#include <vector>

namespace orvelle::icons {

/// One image to bake: a drawing in one tint at one size. Lengths are device-independent pixels.
struct Icon {
    QString name;        ///< file name without density and ending
    QString source;      ///< SVG file beside the list
    QSize size;          ///< of the image
    QSize glyph;         ///< of the drawing, centred in the image
    QColor ink;          ///< takes the place of currentColor
    QColor chip;         ///< rounded shape under the drawing; invalid for none
    double chipRadius;   ///< of the chip's corners
    QColor ground;       ///< what the image lies on in the program
    QString groundName;  ///< of `ground` in the list
    QString language;    ///< of the texts in the drawing; empty for none
    double stroke;       ///< line weight in units of the drawing; 0 keeps the drawing's
    int turns;           ///< steps of one turn; 0 for a still, else the image is an animation
};

/// Reads the list of images. Prints one line and returns nothing when the list is wrong.
std::optional<std::vector<Icon>> readIconList(const QString& path);

}  // namespace orvelle::icons
