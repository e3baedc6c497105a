#include "camera/demo/demo_scene.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "camera/encoding/painter.h"
#include "frames/picture_clock.h"

namespace orvelle {

namespace {

constexpr double kPi = 3.14159265358979323846;

// The panorama in views; the horizon and the street in parts of its height.
constexpr double kPanoramaWidth = 2.0;
constexpr double kPanoramaHeight = 1.5;
constexpr double kHorizon = 0.62;
constexpr double kKerb = 0.70;

constexpr int kSigns = 8;  ///< numbered signs along the street
constexpr int kCars = 4;

constexpr uint32_t kGrainStrength = 5;
constexpr uint32_t kGrainSpare = 4096;  ///< where a row's grain may start

struct Palette {
    Yuv skyTop, skyLow, wall, window, street;
};

constexpr Palette kPalettes[] = {
    {{120, 160, 110}, {210, 140, 122}, {95, 124, 136}, {200, 100, 145}, {70, 128, 128}},
    {{90, 150, 140}, {190, 100, 165}, {60, 140, 130}, {215, 90, 150}, {50, 130, 126}},
    {{40, 150, 120}, {85, 155, 115}, {35, 134, 124}, {190, 80, 150}, {30, 128, 128}},
    {{150, 140, 115}, {220, 128, 128}, {130, 118, 140}, {90, 140, 115}, {110, 126, 130}},
};

constexpr Yuv kCarColours[kCars] = {{90, 100, 200}, {150, 60, 140}, {110, 190, 90}, {200, 70, 150}};

const Palette& paletteOf(int variant) {
    return kPalettes[static_cast<size_t>(variant) % std::size(kPalettes)];
}

int even(double value) {
    return static_cast<int>(value) & ~1;
}

uint8_t mix(uint8_t from, uint8_t to, double part) {
    return static_cast<uint8_t>(std::lround(from + (to - from) * part));
}

Yuv mix(Yuv from, Yuv to, double part) {
    return {mix(from.y, to.y, part), mix(from.u, to.u, part), mix(from.v, to.v, part)};
}

// The same houses on every start; good enough to look accidental.
uint32_t nextRandom(uint32_t& state) {
    state = state * 1664525U + 1013904223U;
    return state >> 8;
}

// Small steps up and down, for addition without a sign.
std::vector<uint8_t> makeGrain(int width) {
    std::vector<uint8_t> grain(static_cast<size_t>(width) + kGrainSpare);
    uint32_t random = 1;
    for (uint8_t& step : grain)
        step = static_cast<uint8_t>(nextRandom(random) % (2 * kGrainStrength + 1) - kGrainStrength);
    return grain;
}

std::string clockText(int64_t localDayUs) {
    const auto ms = static_cast<unsigned>(localDayUs / 1000 % 86'400'000);
    char text[16];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u.%03u", ms / 3'600'000 % 24, ms / 60'000 % 60,
                  ms / 1000 % 60, ms % 1000);
    return text;
}

}  // namespace

DemoScene::DemoScene(int width, int height, int variant, std::string label)
    : m_width(width),
      m_height(height),
      m_variant(variant),
      m_label(std::move(label)),
      m_panorama(makePicture(even(width * kPanoramaWidth), even(height * kPanoramaHeight))),
      m_grain(makeGrain(width)) {
    if (!m_panorama)
        return;
    paintSky();
    paintSkyline();
    paintStreet();
}

void DemoScene::paintSky() {
    const Palette& palette = paletteOf(m_variant);
    Painter painter(m_panorama.get());
    const int horizon = even(m_panorama->height * kHorizon);
    for (int y = 0; y < horizon; y += 2)
        painter.fillRect(0, y, m_panorama->width, 2,
                         mix(palette.skyTop, palette.skyLow, double(y) / horizon));
    painter.fillRect(0, horizon, m_panorama->width, m_panorama->height - horizon,
                     mix(palette.wall, palette.skyLow, 0.3));
    painter.fillDisc(m_panorama->width / 3, horizon / 3, m_height / 12, {225, 60, 150});
}

void DemoScene::paintSkyline() {
    uint32_t random = 77U + static_cast<uint32_t>(m_variant) * 7919U;
    int left = 0;
    while (left < m_panorama->width) {
        const int width = m_width / 16 + static_cast<int>(nextRandom(random) % (m_width / 10 + 1));
        const int height = m_height / 8 + static_cast<int>(nextRandom(random) % (m_height / 2 + 1));
        paintBuilding(left, width, height, nextRandom(random));
        left += width + m_width / 80;
    }
}

void DemoScene::paintBuilding(int left, int width, int height, uint32_t windows) {
    const Palette& palette = paletteOf(m_variant);
    const int bottom = even(m_panorama->height * kKerb);
    const int cell = std::max(4, m_height / 24);
    Painter painter(m_panorama.get());
    painter.fillRect(left, bottom - height, width, height,
                     mix(palette.wall, palette.skyLow, (windows % 7) * 0.06));
    for (int y = bottom - height + cell / 2; y + cell < bottom; y += cell) {
        for (int x = left + cell / 2; x + cell / 2 < left + width; x += cell) {
            if (nextRandom(windows) % 3 == 0)
                painter.fillRect(x, y, cell / 2, cell / 2, palette.window);
        }
    }
}

void DemoScene::paintStreet() {
    const Palette& palette = paletteOf(m_variant);
    const int kerb = even(m_panorama->height * kKerb);
    const int width = m_panorama->width;
    const int bottom = m_panorama->height;
    Painter painter(m_panorama.get());
    painter.fillRect(0, kerb, width, bottom - kerb, palette.street);
    painter.fillRect(0, kerb, width, m_height / 60 + 2, mix(palette.street, kWhite, 0.4));
    for (int x = 0; x < width; x += m_width / 8)
        painter.fillRect(x, (kerb + bottom) / 2, m_width / 16, m_height / 90 + 1, kWhite);
    const int dot = std::max(1, m_height / 90);
    for (int sign = 0; sign < kSigns; ++sign)
        painter.drawText(width * (2 * sign + 1) / (2 * kSigns), bottom - 9 * dot, dot,
                         std::to_string(sign + 1), kWhite);
}

void DemoScene::draw(AVFrame* picture, const SceneTime& time, const PanTilt::Position& view) const {
    const Offset offset = offsetOf(view);
    copyView(picture, offset);
    drawMovers(picture, static_cast<double>(time.sceneUs) / 1e6, offset);
    addGrain(picture, time.sceneUs);
    drawTexts(picture, time.localDayUs);
    Painter(picture).fillRect(0, 0, m_width, pictureClockHeight(m_height), kBlack);
    drawPictureClock(picture->data[0], picture->linesize[0], m_width, m_height, time.stamp);
}

DemoScene::Offset DemoScene::offsetOf(const PanTilt::Position& view) const {
    return {even(view.pan * (m_panorama->width - m_width)),
            even(view.tilt * (m_panorama->height - m_height))};
}

void DemoScene::copyView(AVFrame* picture, Offset offset) const {
    for (int plane = 0; plane < 3; ++plane) {
        const int shift = plane ? 1 : 0;
        const int rows = (m_height + shift) >> shift;
        const auto bytes = static_cast<size_t>((m_width + shift) >> shift);
        const uint8_t* from = m_panorama->data[plane] + (offset.left >> shift) +
                              ptrdiff_t{offset.top >> shift} * m_panorama->linesize[plane];
        for (int row = 0; row < rows; ++row)
            std::memcpy(picture->data[plane] + ptrdiff_t{row} * picture->linesize[plane],
                        from + ptrdiff_t{row} * m_panorama->linesize[plane], bytes);
    }
}

void DemoScene::drawMovers(AVFrame* picture, double seconds, Offset offset) const {
    const double angle = seconds * 2.0 * kPi / 12.0;
    const int x = static_cast<int>(m_panorama->width * (0.5 + 0.42 * std::sin(angle)));
    const int y = static_cast<int>(m_panorama->height * (0.30 + 0.10 * std::cos(2.0 * angle)));
    const int radius = m_height / 14;
    Painter painter(picture);
    painter.fillDisc(x - offset.left, y - offset.top, radius, {110, 100, 210});
    painter.fillRect(x - offset.left - radius / 4, y - offset.top + radius * 5 / 4, radius / 2,
                     radius / 2, {80, 100, 150});
    for (int car = 0; car < kCars; ++car)
        drawCar(picture, car, seconds, offset);
}

// Two lanes, one each way; cars that leave the panorama come back at its other end.
void DemoScene::drawCar(AVFrame* picture, int index, double seconds, Offset offset) const {
    const int length = m_height / 5;
    const int height = m_height / 14;
    const bool leftwards = index % 2;
    const double lap = m_panorama->width + 2.0 * length;
    const double speed = m_width * (0.18 + 0.05 * index);
    const double way = std::fmod(seconds * speed + index * lap / kCars, lap);
    const int x = static_cast<int>(leftwards ? lap - way : way) - 2 * length + length / 2;
    const int y = static_cast<int>(m_panorama->height * (leftwards ? 0.745 : 0.86));
    Painter painter(picture);
    const int left = x - offset.left;
    const int top = y - offset.top;
    painter.fillRect(left, top, length, height, kCarColours[index]);
    painter.fillRect(left + length / 4, top - height / 2, length / 2, height / 2, {170, 140, 118});
    painter.fillDisc(left + length / 4, top + height, height / 3, kBlack);
    painter.fillDisc(left + length * 3 / 4, top + height, height / 3, kBlack);
}

void DemoScene::addGrain(AVFrame* picture, int64_t sceneUs) const {
    auto random = static_cast<uint32_t>(sceneUs);
    for (int row = pictureClockHeight(m_height); row < m_height; ++row) {
        uint8_t* luma = picture->data[0] + ptrdiff_t{row} * picture->linesize[0];
        const uint8_t* grain = m_grain.data() + nextRandom(random) % kGrainSpare;
        for (int x = 0; x < m_width; ++x)
            luma[x] = static_cast<uint8_t>(luma[x] + grain[x]);
    }
}

void DemoScene::drawTexts(AVFrame* picture, int64_t localDayUs) const {
    const int dot = std::max(1, m_height / 120);
    const std::string clock = clockText(localDayUs);
    const int textWidth = Painter::textWidth(dot, clock);
    const int textHeight = kGlyphRows * dot;
    const int left = 4 * dot;
    const int top = pictureClockHeight(m_height) + 4 * dot;
    Painter painter(picture);
    painter.fillRect(left - 2 * dot, top - 2 * dot, textWidth + 3 * dot, textHeight + 6 * dot,
                     kBlack);
    painter.drawText(left, top, dot, clock, kWhite);
    painter.fillRect(left, top + textHeight + dot,
                     static_cast<int>(textWidth * (localDayUs % 1'000'000) / 1'000'000), dot,
                     kWhite);
    const int labelDot = std::max(1, dot * 2 / 3);
    const int labelTop = m_height - (kGlyphRows + 3) * labelDot;
    painter.fillRect(left - 2 * dot, labelTop - labelDot,
                     Painter::textWidth(labelDot, m_label) + 3 * dot, (kGlyphRows + 2) * labelDot,
                     kBlack);
    painter.drawText(left, labelTop, labelDot, m_label, kWhite);
}

}  // namespace orvelle
