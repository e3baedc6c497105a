#pragma once

#include <QString>

#include <chrono>
#include <vector>

#include "frames/ffmpeg_ptr.h"

namespace orvelle::bench {

/// The pictures of a media file, still encoded.
struct VideoFile {
    CodecParametersPtr parameters;
    std::vector<PacketPtr> packets;  ///< none when the file could not be read
    std::chrono::nanoseconds frameTime{0};
    AVRational timeBase{0, 1};  ///< of the packets' times

    static VideoFile read(const QString& path);
    /// How many pictures are missing between the others, told by their times.
    int gaps() const;
};

}  // namespace orvelle::bench
