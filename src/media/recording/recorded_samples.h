#pragma once

#include <QString>

#include <cstdint>
#include <vector>

namespace orvelle {

/// What a file of fragments holds of one track. Times in ticks of the track's own scale.
struct RecordedTrack {
    struct Chunk {
        uint64_t offset;  ///< in the file
        uint32_t samples;
    };

    uint32_t ticksPerSec = 0;
    uint64_t startTicks = 0;      ///< of the first sample
    std::vector<uint32_t> sizes;  ///< of each sample in bytes
    std::vector<uint32_t> ticks;  ///< how long each sample lasts
    std::vector<uint32_t> keys;   ///< samples that a player can begin at, counted from 0
    std::vector<Chunk> chunks;    ///< samples that follow each other without a gap

    uint64_t lengthTicks() const;
};

struct RecordedSamples {
    std::vector<RecordedTrack> tracks;  ///< as in the movie box; some may be empty
    uint64_t endBytes = 0;              ///< behind the last sample
    bool hasPicture = false;
};

/// Lists the samples of a file of fragments, as far as its bytes reach. Only the fragments' own
/// tables are read. Empty when it is no such file.
RecordedSamples readSamples(const QString& path);

}  // namespace orvelle
