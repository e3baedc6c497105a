#pragma once

#include <QColor>
#include <QSize>

#include <algorithm>
#include <memory>
#include <vector>

#include "frames/yuv_data.h"

namespace orvelle::test {

struct Yuv {
    uint8_t y, u, v;
};

/// One colour above another; chroma is rounded up at odd sizes and `padding` bytes end each row.
inline std::unique_ptr<KvYUV420P> twoTone(QSize size, Yuv upper, Yuv lower, int padding = 0) {
    const auto plane = [](int stride, int rows, uint8_t above, uint8_t below) {
        std::vector<uint8_t> bytes(static_cast<size_t>(stride * rows), above);
        std::fill(bytes.begin() + stride * (rows / 2), bytes.end(), below);
        return bytes;
    };
    const int half = (size.width() + 1) / 2 + padding;
    const int strides[] = {size.width() + padding, half, half};
    const auto y = plane(strides[0], size.height(), upper.y, lower.y);
    const auto u = plane(half, (size.height() + 1) / 2, upper.u, lower.u);
    const auto v = plane(half, (size.height() + 1) / 2, upper.v, lower.v);
    const uint8_t* planes[] = {y.data(), u.data(), v.data()};
    return std::make_unique<KvYUV420P>(planes, size.width(), size.height(), strides);
}

/// The colour with luma counted from `black`: 0 in the view, 16 by the standard.
inline QColor colorOf(Yuv yuv, int black) {
    const double y = 1.164 * (yuv.y - black);
    const auto byte = [](double value) { return std::clamp(qRound(value), 0, 255); };
    return QColor(byte(y + 1.596 * (yuv.v - 128)),
                  byte(y - 0.392 * (yuv.u - 128) - 0.813 * (yuv.v - 128)),
                  byte(y + 2.017 * (yuv.u - 128)));
}

inline bool isNear(const QColor& a, const QColor& b) {
    return qAbs(a.red() - b.red()) <= 3 && qAbs(a.green() - b.green()) <= 3 &&
           qAbs(a.blue() - b.blue()) <= 3;
}

}  // namespace orvelle::test
