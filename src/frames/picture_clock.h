#pragma once

#include <cstdint>
#include <optional>

namespace orvelle {

/// The machine-readable time stamp of a test picture: 64 light and dark cells in two rows of 32
/// across the top tenth, the value's 48 bits (high bit first) and a 16-bit checksum. It outlives
/// lossy coding, scaling and the way to RGB, so the delay can be read off the screen's pixels.
constexpr uint64_t kPictureClockMask = (uint64_t{1} << 48) - 1;

/// The height in pixels that the clock takes from a picture's top; a scene should leave colour
/// neutral there.
int pictureClockHeight(int pictureHeight);

/// Draws the low 48 bits of `value` (microseconds by habit) into a luma plane. False, and nothing
/// drawn, when the picture is below 64 x 40 pixels.
bool drawPictureClock(uint8_t* luma, int stride, int width, int height, uint64_t value);

/// Borrowed pixels of a whole picture at any scale: a luma or grey plane (bytesPerPixel 1), or RGB
/// in either order with green as the second byte (3 or 4).
struct PixelView {
    const uint8_t* pixels;
    int width;
    int height;
    int bytesPerLine;
    int bytesPerPixel = 1;
};

/// The 48-bit value; nothing when the cells do not stand out or the checksum fails.
std::optional<uint64_t> readPictureClock(const PixelView& picture);

}  // namespace orvelle
