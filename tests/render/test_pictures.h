#pragma once

#include <QColor>
#include <QSize>

#include <cstdint>
#include <memory>

#include "frames/yuv_data.h"

namespace orvelle::test {

struct Yuv {
    uint8_t y, u, v;
};

/// A picture of one colour in its upper and another in its lower half; `padding` bytes follow
/// each source row.
std::unique_ptr<KvYUV420P> twoTone(QSize size, Yuv upper, Yuv lower, int padding = 0);

/// What the standard's studio range makes of a colour, and what a view without an offset does.
QColor studioColor(Yuv yuv);
QColor viewColor(Yuv yuv);

/// Whether no channel differs by more than `tolerance`.
bool isNear(const QColor& a, const QColor& b, int tolerance);

}  // namespace orvelle::test
