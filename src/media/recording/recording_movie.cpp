#include "media/recording/recording_movie.h"

#include <algorithm>
#include <limits>

#include "media/recording/box_writer.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace orvelle {

namespace {

constexpr uint64_t kMost32 = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kPlainRate = 0x00010000;

uint64_t rescale(uint64_t ticks, uint32_t from, uint32_t to) {
    return static_cast<uint64_t>(av_rescale(static_cast<int64_t>(ticks), to, from));
}

/// When a track is played, in the movie's ticks.
struct Edit {
    uint64_t delay = 0;  ///< until it begins
    uint64_t played = 0;

    uint64_t length() const { return delay + played; }
};

Edit editOf(const RecordedTrack& track, uint32_t movieTicksPerSec) {
    if (track.ticksPerSec == 0)
        return {};
    return {rescale(track.startTicks, track.ticksPerSec, movieTicksPerSec),
            rescale(track.lengthTicks(), track.ticksPerSec, movieTicksPerSec)};
}

class MovieWriter {
public:
    MovieWriter(const BoxReader& header, const std::vector<RecordedTrack>& tracks);
    std::vector<uint8_t> write();

private:
    void writeTrack(BoxReader track, const RecordedTrack& recorded, const Edit& edit);
    void writeEdits(const Edit& edit);
    void writeMedia(BoxReader media, const RecordedTrack& recorded);
    void writeInformation(BoxReader information, const RecordedTrack& recorded);
    void writeDuration(const Box& box, size_t bytesBetween, uint64_t duration);
    void writeTables(const BoxReader& descriptions, const RecordedTrack& recorded);
    void writeTimes(const RecordedTrack& recorded);
    void writeKeys(const RecordedTrack& recorded);
    void writeSizes(const RecordedTrack& recorded);
    void writeChunks(const RecordedTrack& recorded);

    BoxReader m_header;
    const std::vector<RecordedTrack>& m_tracks;
    uint32_t m_ticksPerSec = 0;
    BoxWriter m_out;
};

MovieWriter::MovieWriter(const BoxReader& header, const std::vector<RecordedTrack>& tracks)
    : m_header(header), m_tracks(tracks) {
    m_header.skip(8);
    BoxReader general = m_header.find(boxType("mvhd"));
    general.skip(general.u32() >> 24 == 0 ? 8 : 16);
    m_ticksPerSec = general.u32();
}

std::vector<uint8_t> MovieWriter::write() {
    if (m_ticksPerSec == 0)
        return {};
    std::vector<Edit> edits;
    uint64_t length = 0;
    for (const RecordedTrack& track : m_tracks) {
        edits.push_back(editOf(track, m_ticksPerSec));
        length = std::max(length, edits.back().length());
    }
    size_t written = 0, at = 0;
    const size_t movie = m_out.begin(boxType("moov"));
    for (Box box; m_header.next(box);) {
        if (box.type == boxType("mvhd")) {
            writeDuration(box, 4, length);
        } else if (box.type == boxType("trak")) {
            const size_t track = at++;
            if (track >= m_tracks.size() || edits[track].played == 0)
                continue;
            writeTrack(box.body, m_tracks[track], edits[track]);
            ++written;
        } else if (box.type != boxType("mvex")) {
            m_out.bytes(box.whole);
        }
    }
    m_out.end(movie);
    return written > 0 ? m_out.written() : std::vector<uint8_t>();
}

void MovieWriter::writeTrack(BoxReader track, const RecordedTrack& recorded, const Edit& edit) {
    const size_t mark = m_out.begin(boxType("trak"));
    for (Box box; track.next(box);) {
        if (box.type == boxType("tkhd")) {
            writeDuration(box, 8, edit.length());
            writeEdits(edit);
        } else if (box.type == boxType("mdia")) {
            writeMedia(box.body, recorded);
        } else if (box.type != boxType("edts")) {
            m_out.bytes(box.whole);
        }
    }
    m_out.end(mark);
}

void MovieWriter::writeEdits(const Edit& edit) {
    if (edit.delay == 0)
        return;
    const bool isWide = edit.length() > kMost32 / 2;
    const size_t edits = m_out.begin(boxType("edts"));
    const size_t list = m_out.beginFull(boxType("elst"), isWide);
    m_out.u32(2);
    m_out.sized(edit.delay, isWide);
    m_out.sized(~uint64_t{0}, isWide);  // nothing is shown
    m_out.u32(kPlainRate);
    m_out.sized(edit.played, isWide);
    m_out.sized(0, isWide);  // from the track's beginning
    m_out.u32(kPlainRate);
    m_out.end(list);
    m_out.end(edits);
}

void MovieWriter::writeMedia(BoxReader media, const RecordedTrack& recorded) {
    const size_t mark = m_out.begin(boxType("mdia"));
    for (Box box; media.next(box);) {
        if (box.type == boxType("mdhd"))
            writeDuration(box, 4, recorded.lengthTicks());
        else if (box.type == boxType("minf"))
            writeInformation(box.body, recorded);
        else
            m_out.bytes(box.whole);
    }
    m_out.end(mark);
}

void MovieWriter::writeInformation(BoxReader information, const RecordedTrack& recorded) {
    const size_t mark = m_out.begin(boxType("minf"));
    for (Box box; information.next(box);) {
        if (box.type == boxType("stbl"))
            writeTables(box.body, recorded);
        else
            m_out.bytes(box.whole);
    }
    m_out.end(mark);
}

/// Copies a header with another duration. Version 0 holds: version and flags, two times, other
/// fields (`bytesBetween`), the duration, the rest; version 1 has 64 bits for each time.
void MovieWriter::writeDuration(const Box& box, size_t bytesBetween, uint64_t duration) {
    BoxReader fields = box.body;
    const uint32_t versionAndFlags = fields.u32();
    const bool wasWide = versionAndFlags >> 24 != 0;
    const bool isWide = wasWide || duration > kMost32;
    const size_t mark = m_out.beginFull(box.type, isWide, versionAndFlags & 0xFFFFFF);
    for (int time = 0; time < 2; ++time)
        m_out.sized(wasWide ? fields.u64() : fields.u32(), isWide);
    m_out.bytes(fields.take(bytesBetween));
    fields.skip(wasWide ? 8 : 4);
    m_out.sized(duration, isWide);
    m_out.bytes(fields);
    m_out.end(mark);
}

void MovieWriter::writeTables(const BoxReader& descriptions, const RecordedTrack& recorded) {
    const size_t mark = m_out.begin(boxType("stbl"));
    BoxReader reader = descriptions;
    for (Box box; reader.next(box);) {
        if (box.type == boxType("stsd"))
            m_out.bytes(box.whole);
    }
    writeTimes(recorded);
    writeKeys(recorded);
    writeSizes(recorded);
    writeChunks(recorded);
    m_out.end(mark);
}

void MovieWriter::writeTimes(const RecordedTrack& recorded) {
    struct Stretch {
        uint32_t samples, ticks;
    };
    std::vector<Stretch> stretches;
    for (const uint32_t ticks : recorded.ticks) {
        if (stretches.empty() || stretches.back().ticks != ticks)
            stretches.push_back({0, ticks});
        ++stretches.back().samples;
    }
    const size_t mark = m_out.beginFull(boxType("stts"));
    m_out.u32(static_cast<uint32_t>(stretches.size()));
    for (const Stretch& stretch : stretches) {
        m_out.u32(stretch.samples);
        m_out.u32(stretch.ticks);
    }
    m_out.end(mark);
}

void MovieWriter::writeKeys(const RecordedTrack& recorded) {
    // Without this table every sample counts as a key.
    if (recorded.keys.size() == recorded.sizes.size())
        return;
    const size_t mark = m_out.beginFull(boxType("stss"));
    m_out.u32(static_cast<uint32_t>(recorded.keys.size()));
    for (const uint32_t key : recorded.keys)
        m_out.u32(key + 1);
    m_out.end(mark);
}

void MovieWriter::writeSizes(const RecordedTrack& recorded) {
    const size_t mark = m_out.beginFull(boxType("stsz"));
    m_out.u32(0);  // sizes differ
    m_out.u32(static_cast<uint32_t>(recorded.sizes.size()));
    for (const uint32_t size : recorded.sizes)
        m_out.u32(size);
    m_out.end(mark);
}

void MovieWriter::writeChunks(const RecordedTrack& recorded) {
    const std::vector<RecordedTrack::Chunk>& chunks = recorded.chunks;
    std::vector<uint32_t> changes;  // chunks whose number of samples is another than before
    for (uint32_t i = 0; i < chunks.size(); ++i) {
        if (i == 0 || chunks[i].samples != chunks[i - 1].samples)
            changes.push_back(i);
    }
    size_t mark = m_out.beginFull(boxType("stsc"));
    m_out.u32(static_cast<uint32_t>(changes.size()));
    for (const uint32_t change : changes) {
        m_out.u32(change + 1);
        m_out.u32(chunks[change].samples);
        m_out.u32(1);  // the only description
    }
    m_out.end(mark);

    const bool isWide = !chunks.empty() && chunks.back().offset > kMost32;
    mark = m_out.beginFull(boxType(isWide ? "co64" : "stco"));
    m_out.u32(static_cast<uint32_t>(chunks.size()));
    for (const RecordedTrack::Chunk& chunk : chunks)
        m_out.sized(chunk.offset, isWide);
    m_out.end(mark);
}

}  // namespace

std::vector<uint8_t> finishedMovie(const BoxReader& header,
                                   const std::vector<RecordedTrack>& tracks) {
    return MovieWriter(header, tracks).write();
}

}  // namespace orvelle
