#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/box_reader.h"

namespace orvelle {

/// What the fragments say of one track. Times in ticks of the track's own scale.
struct RecordedTrack {
    struct Chunk {
        uint64_t offset;  ///< in the file
        uint32_t samples;
    };

    uint32_t id = 0;
    bool isPicture = false;
    uint32_t ticksPerSec = 0;
    uint64_t startTicks = 0;      ///< of the first sample
    uint64_t endTicks = 0;        ///< of the last one's end
    std::vector<uint32_t> sizes;  ///< of each sample in bytes
    std::vector<uint32_t> ticks;  ///< how long each sample lasts
    std::vector<uint32_t> keys;   ///< samples that a player can begin at, counted from 0
    std::vector<Chunk> chunks;    ///< samples that follow each other without a gap

    uint64_t lengthTicks() const { return endTicks - startTicks; }
    uint64_t ticksAt(uint32_t sample) const;  ///< where the sample begins
};

/// Reads along while a fragmented MP4 file is written, and so knows all its samples at the end
/// without reading the file again. An hour costs about 1 MB.
class RecordingIndex {
public:
    /// The next bytes of the file. 0, or AVERROR_INVALIDDATA when they are no fragments.
    int append(const uint8_t* bytes, size_t size);

    /// Up to here the file consists of whole fragments.
    uint64_t wholeBytes() const { return m_wholeBytes; }
    /// The movie box before the fragments, and where it stands; empty before it is written.
    BoxReader movie() const { return {m_movie.data(), m_movie.size()}; }
    uint64_t movieOffset() const { return m_movieOffset; }
    /// What whole fragments hold.
    const std::vector<RecordedTrack>& tracks() const { return m_tracks; }

private:
    struct Sample {
        uint32_t ticks, size, flags;
    };
    /// Samples of one track in the fragment whose data is still to come.
    struct Run {
        size_t track;
        uint64_t offset;
        uint64_t startTicks;
        std::vector<Sample> samples;
    };

    bool beginBox();
    bool endBox();
    bool readMovie();
    bool readTrack(BoxReader track);
    bool readFragment();
    bool readTrackFragment(BoxReader fragment);
    bool readRun(BoxReader table, Run run, const Sample& defaults);
    bool takeRuns();
    void take(const Run& run);

    std::vector<RecordedTrack> m_tracks;
    std::vector<Sample> m_defaults;  ///< of each track, for fields that a fragment leaves out
    std::vector<uint8_t> m_movie;
    uint64_t m_movieOffset = 0;
    uint64_t m_wholeBytes = 0;
    std::vector<Run> m_runs;

    std::vector<uint8_t> m_box;  ///< the header of the present box, or all of it when it is read
    uint32_t m_type = 0;         ///< 0 until the header is there
    uint64_t m_boxStart = 0;
    uint64_t m_boxBytes = 8;
    uint64_t m_boxSeen = 0;
};

}  // namespace orvelle
