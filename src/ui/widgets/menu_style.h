#pragma once

#include <QString>

#include "ui/palette.h"

namespace orvelle {

/// Style sheet of a QMenu that looks like the menus drawn by hand.
inline QString menuStyle() {
    using namespace palette;
    return QStringLiteral(
               "QMenu{background:#ffffff;border:1px solid %1;padding:4px 0;}"
               "QMenu::item{color:%2;padding:7px 20px 7px 12px;}"
               "QMenu::item:selected{color:%3;background:%4;}"
               "QMenu::separator{height:1px;background:#ededed;margin:0 8px;}")
        .arg(QLatin1String(kFrame), QLatin1String(kText), QLatin1String(kAccentPressed),
             QLatin1String(kAccentTint));
}

}  // namespace orvelle
