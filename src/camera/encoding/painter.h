#pragma once

#include <cstdint>
#include <string>

#include "frames/ffmpeg_ptr.h"

namespace orvelle {

/// A colour as a 4:2:0 picture stores it.
struct Yuv {
    uint8_t y, u, v;
};

constexpr Yuv kBlack = {16, 128, 128};
constexpr Yuv kWhite = {235, 128, 128};

constexpr int kGlyphColumns = 5;  ///< dots of a character; one more parts it from the next
constexpr int kGlyphRows = 7;

/// A planar 4:2:0 picture with buffers of its own; null when out of memory.
FramePtr makePicture(int width, int height);

/// Draws into a writable planar 4:2:0 picture, clipped to it. Coordinates in pixels.
class Painter {
public:
    /// `picture` is borrowed.
    explicit Painter(AVFrame* picture) : m_picture(picture) {}

    void fillRect(int x, int y, int width, int height, Yuv colour);
    void fillDisc(int centreX, int centreY, int radius, Yuv colour);
    /// Capitals, digits and a few signs; other characters leave a blank. `dot` is the size of a
    /// glyph's dot in pixels.
    void drawText(int x, int y, int dot, const std::string& text, Yuv colour);

    static int textWidth(int dot, const std::string& text);

private:
    void drawGlyph(int x, int y, int dot, char character, Yuv colour);

    AVFrame* const m_picture;
};

}  // namespace orvelle
