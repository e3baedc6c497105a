#include "frames/picture_clock.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace orvelle {
namespace {

constexpr int kColumns = 32;
constexpr int kRows = 2;
constexpr int kCells = kColumns * kRows;
constexpr int kRowsPerPicture = 20;
constexpr int kMinWidth = 2 * kColumns;
constexpr int kMinHeight = 2 * kRowsPerPicture;
constexpr uint8_t kDark = 32;
constexpr uint8_t kLight = 220;
constexpr int kMinContrast = 48;

struct CellRect {
    int left, top, right, bottom;
};

CellRect cellRect(int cell, int width, int height) {
    const int column = cell % kColumns;
    const int row = cell / kColumns;
    return {column * width / kColumns, row * height / kRowsPerPicture,
            (column + 1) * width / kColumns, (row + 1) * height / kRowsPerPicture};
}

uint16_t checksumOf(uint64_t value) {
    // CRC-16 (polynomial 0x1021) with a start value that keeps blank pictures from passing.
    unsigned crc = 0xFFFF;
    for (int bit = 47; bit >= 0; --bit) {
        const bool flip = ((crc >> 15) ^ (value >> bit)) & 1;
        crc = (crc << 1) & 0xFFFF;
        if (flip)
            crc ^= 0x1021;
    }
    return static_cast<uint16_t>(crc);
}

int brightness(const uint8_t* pixel, int bytesPerPixel) {
    if (bytesPerPixel == 1)
        return pixel[0];
    return (pixel[0] + 2 * pixel[1] + pixel[2]) / 4;
}

// The middle of the cell only: its edges blur into the neighbours.
int cellBrightness(const PixelView& picture, const CellRect& cell) {
    const int marginX = (cell.right - cell.left) / 4;
    const int marginY = (cell.bottom - cell.top) / 4;
    int sum = 0;
    int count = 0;
    for (int y = cell.top + marginY; y < cell.bottom - marginY; ++y) {
        const uint8_t* line = picture.pixels + static_cast<ptrdiff_t>(y) * picture.bytesPerLine;
        for (int x = cell.left + marginX; x < cell.right - marginX; ++x, ++count)
            sum += brightness(line + static_cast<ptrdiff_t>(x) * picture.bytesPerPixel,
                              picture.bytesPerPixel);
    }
    return count > 0 ? sum / count : 0;
}

}  // namespace

int pictureClockHeight(int pictureHeight) {
    return kRows * pictureHeight / kRowsPerPicture;
}

bool drawPictureClock(uint8_t* luma, int stride, int width, int height, uint64_t value) {
    if (width < kMinWidth || height < kMinHeight)
        return false;
    value &= kPictureClockMask;
    const uint64_t bits = value << 16 | checksumOf(value);
    for (int cell = 0; cell < kCells; ++cell) {
        const uint8_t level = (bits >> (kCells - 1 - cell)) & 1 ? kLight : kDark;
        const CellRect rect = cellRect(cell, width, height);
        for (int y = rect.top; y < rect.bottom; ++y)
            std::memset(luma + static_cast<ptrdiff_t>(y) * stride + rect.left, level,
                        static_cast<size_t>(rect.right - rect.left));
    }
    return true;
}

std::optional<uint64_t> readPictureClock(const PixelView& picture) {
    if (!picture.pixels || picture.width < kMinWidth || picture.height < kMinHeight)
        return std::nullopt;
    std::array<int, kCells> levels{};
    for (int cell = 0; cell < kCells; ++cell)
        levels[static_cast<size_t>(cell)] =
            cellBrightness(picture, cellRect(cell, picture.width, picture.height));

    const auto [darkest, lightest] = std::minmax_element(levels.begin(), levels.end());
    if (*lightest - *darkest < kMinContrast)
        return std::nullopt;
    const int threshold = (*lightest + *darkest) / 2;
    uint64_t bits = 0;
    for (int level : levels)
        bits = bits << 1 | (level > threshold ? 1u : 0u);

    const uint64_t value = bits >> 16;
    if (checksumOf(value) != (bits & 0xFFFF))
        return std::nullopt;
    return value;
}

}  // namespace orvelle
