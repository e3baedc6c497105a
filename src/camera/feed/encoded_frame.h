#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace orvelle {

using SharedBytes = std::shared_ptr<const std::vector<uint8_t>>;

enum class Medium { kVideo, kAudio };

/// One access unit or block of sound as it goes to the clients; cheap to copy.
struct EncodedFrame {
    Medium medium = Medium::kVideo;
    uint16_t codecId = 0;  ///< camera codec id
    bool isKey = false;    ///< video: decodable from here, parameter sets included
    int64_t timeUs = 0;    ///< of the camera clock (cameraClockUs())
    SharedBytes bytes;     ///< Annex B, ADTS or A-law; never null
};

/// The clock that stamps frames: microseconds, monotonic, of no particular origin.
int64_t cameraClockUs();

}  // namespace orvelle
