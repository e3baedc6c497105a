#pragma once

namespace orvelle {

/// Style sheet of every vertical scroll bar: narrow, without arrows.
constexpr char kScrollBarStyle[] =
    "QScrollBar:vertical{background:#ffffff;border:none;margin:0;width:8px;}"
    "QScrollBar::handle:vertical{background:#c4c4c4;border-radius:4px;min-height:32px;}"
    "QScrollBar::handle:vertical:hover{background:#9c9c9c;}"
    "QScrollBar::add-line:vertical,QScrollBar::sub-line:vertical{height:0;}"
    "QScrollBar::add-page:vertical,QScrollBar::sub-page:vertical{background:none;}";

}  // namespace orvelle
