#include "render/test_pictures.h"

#include <QtGlobal>

#include <algorithm>
#include <vector>

namespace orvelle::test {
namespace {

std::vector<uint8_t> plane(int stride, int rows, uint8_t upper, uint8_t lower) {
    std::vector<uint8_t> bytes(static_cast<size_t>(stride * rows), upper);
    std::fill(bytes.begin() + stride * (rows / 2), bytes.end(), lower);
    return bytes;
}

QColor fromYuv(Yuv yuv, int offset) {
    const double y = 1.164 * (yuv.y - offset);
    const double u = yuv.u - 128;
    const double v = yuv.v - 128;
    const auto byte = [](double value) { return std::clamp(qRound(value), 0, 255); };
    return QColor(byte(y + 1.596 * v), byte(y - 0.392 * u - 0.813 * v), byte(y + 2.017 * u));
}

}  // namespace

std::unique_ptr<KvYUV420P> twoTone(QSize size, Yuv upper, Yuv lower, int padding) {
    const int stride = size.width() + padding;
    const int halfStride = (size.width() + 1) / 2 + padding;
    const int halfRows = (size.height() + 1) / 2;
    const auto y = plane(stride, size.height(), upper.y, lower.y);
    const auto u = plane(halfStride, halfRows, upper.u, lower.u);
    const auto v = plane(halfStride, halfRows, upper.v, lower.v);
    const uint8_t* planes[] = {y.data(), u.data(), v.data()};
    const int strides[] = {stride, halfStride, halfStride};
    return std::make_unique<KvYUV420P>(planes, size.width(), size.height(), strides);
}

QColor studioColor(Yuv yuv) {
    return fromYuv(yuv, 16);
}

QColor viewColor(Yuv yuv) {
    return fromYuv(yuv, 0);
}

bool isNear(const QColor& a, const QColor& b, int tolerance) {
    return qAbs(a.red() - b.red()) <= tolerance && qAbs(a.green() - b.green()) <= tolerance &&
           qAbs(a.blue() - b.blue()) <= tolerance;
}

}  // namespace orvelle::test
