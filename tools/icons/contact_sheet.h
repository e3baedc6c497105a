#pragma once

#include <QImage>

#include <vector>

#include "icons/icon_list.h"

namespace orvelle::icons {

struct Specimen {
    Icon icon;
    QImage image;
};

/// One picture that shows every image at its real size on its real ground, with its name.
/// Large pictures are shown smaller.
QImage paintContactSheet(const std::vector<Specimen>& specimens, int scale);

}  // namespace orvelle::icons
