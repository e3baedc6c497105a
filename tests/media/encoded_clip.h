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
};

/// Pictures of even grey, each lighter than the one before, without reordering. Empty when the
/// encoder cannot be had.
std::vector<EncodedPicture> encodeClip(const ClipFormat& format);

}  // namespace orvelle::test
