#pragma once

#include <cstdint>
#include <vector>

namespace orvelle::test {

/// One compressed picture, Annex B with parameter sets before each key frame.
struct EncodedPicture {
    std::vector<uint8_t> bytes;
    bool isKey = false;
};

struct ClipFormat {
    bool isHevc = false;
    int width = 64;
    int height = 48;
    int pictures = 10;
    int picturesPerKey = 5;
    const char* encoder = nullptr;  ///< FFmpeg's name, in place of libx264 and libx265
    int pixelFormat = 0;            ///< an AVPixelFormat; 0 is planar 4:2:0
    bool isTextured = false;        ///< a moving texture in place of the grey
};

/// Pictures of even grey, each lighter than the one before, without reordering. Empty when the
/// encoder cannot be had.
std::vector<EncodedPicture> encodeClip(const ClipFormat& format);

}  // namespace orvelle::test
