#include "media/recording_index.h"

#include <algorithm>
#include <numeric>
#include <utility>

extern "C" {
#include <libavutil/error.h>
}

namespace orvelle {

namespace {

constexpr uint64_t kHeaderBytes = 8;
/// A second of packets needs a few kilobytes.
constexpr uint64_t kMaxTableBytes = 16 * 1024 * 1024;
constexpr uint32_t kMaxSamples = 1024 * 1024;

constexpr uint32_t kMovie = boxType("moov");
constexpr uint32_t kFragment = boxType("moof");
constexpr uint32_t kData = boxType("mdat");

// Flags of a track fragment's header, of a run of samples, and of a sample.
constexpr uint32_t kHasBaseOffset = 0x01, kHasDescription = 0x02;
constexpr uint32_t kHasTicks = 0x08, kHasSize = 0x10, kHasFlags = 0x20;
constexpr uint32_t kRunHasOffset = 0x001, kRunHasFirstFlags = 0x004, kRunHasTicks = 0x100;
constexpr uint32_t kRunHasSize = 0x200, kRunHasFlags = 0x400, kRunHasShift = 0x800;
constexpr uint32_t kIsNoKey = 0x00010000;

bool isRead(uint32_t type) {
    return type == kMovie || type == kFragment;
}

uint32_t version(uint32_t versionAndFlags) {
    return versionAndFlags >> 24;
}

}  // namespace

uint64_t RecordedTrack::ticksAt(uint32_t sample) const {
    return std::accumulate(ticks.begin(), ticks.begin() + sample, startTicks);
}

int RecordingIndex::append(const uint8_t* bytes, size_t size) {
    while (size > 0) {
        const size_t taken = static_cast<size_t>(std::min<uint64_t>(size, m_boxBytes - m_boxSeen));
        if (m_type == 0 || isRead(m_type))
            m_box.insert(m_box.end(), bytes, bytes + taken);
        m_boxSeen += taken;
        bytes += taken;
        size -= taken;
        if (m_type == 0 && m_boxSeen == kHeaderBytes && !beginBox())
            return AVERROR_INVALIDDATA;
        if (m_type != 0 && m_boxSeen == m_boxBytes && !endBox())
            return AVERROR_INVALIDDATA;
    }
    return 0;
}

bool RecordingIndex::beginBox() {
    BoxReader header(m_box.data(), m_box.size());
    m_boxBytes = header.u32();
    m_type = header.u32();
    return m_type != 0 && m_boxBytes >= kHeaderBytes &&
           (!isRead(m_type) || m_boxBytes <= kMaxTableBytes);
}

bool RecordingIndex::endBox() {
    bool isGood = true;
    if (m_type == kMovie)
        isGood = readMovie();
    else if (m_type == kFragment)
        isGood = readFragment();
    else if (m_type == kData)
        isGood = takeRuns();
    m_boxStart += m_boxBytes;
    if (m_type != kFragment)
        m_wholeBytes = m_boxStart;
    m_box.clear();
    m_type = 0;
    m_boxBytes = kHeaderBytes;
    m_boxSeen = 0;
    return isGood;
}

bool RecordingIndex::readMovie() {
    if (!m_movie.empty())
        return false;
    m_movie = std::move(m_box);
    m_box = {};
    m_movieOffset = m_boxStart;
    BoxReader boxes = movie();
    boxes.skip(kHeaderBytes);
    const BoxReader defaults = boxes.find(boxType("mvex"));
    for (Box box; boxes.next(box);) {
        if (box.type == boxType("trak") && !readTrack(box.body))
            return false;
    }
    m_defaults.resize(m_tracks.size(), Sample{});
    BoxReader reader = defaults;
    for (Box box; reader.next(box);) {
        if (box.type != boxType("trex"))
            continue;
        box.body.skip(4);
        const uint32_t id = box.body.u32();
        box.body.skip(4);
        const uint32_t ticks = box.body.u32(), size = box.body.u32(), flags = box.body.u32();
        for (size_t i = 0; i < m_tracks.size(); ++i) {
            if (m_tracks[i].id == id)
                m_defaults[i] = {ticks, size, flags};
        }
    }
    return boxes.isGood() && reader.isGood() && !m_tracks.empty();
}

bool RecordingIndex::readTrack(BoxReader track) {
    RecordedTrack read;
    BoxReader header = track.find(boxType("tkhd"));
    header.skip(version(header.u32()) == 0 ? 8 : 16);
    read.id = header.u32();
    const BoxReader media = track.find(boxType("mdia"));
    BoxReader mediaHeader = media.find(boxType("mdhd"));
    mediaHeader.skip(version(mediaHeader.u32()) == 0 ? 8 : 16);
    read.ticksPerSec = mediaHeader.u32();
    BoxReader handler = media.find(boxType("hdlr"));
    handler.skip(8);
    read.isPicture = handler.u32() == boxType("vide");
    m_tracks.push_back(std::move(read));
    return header.isGood() && mediaHeader.isGood() && handler.isGood() &&
           m_tracks.back().ticksPerSec > 0;
}

bool RecordingIndex::readFragment() {
    m_runs.clear();
    BoxReader boxes(m_box.data(), m_box.size());
    boxes.skip(kHeaderBytes);
    for (Box box; boxes.next(box);) {
        if (box.type == boxType("traf") && !readTrackFragment(box.body))
            return false;
    }
    return boxes.isGood();
}

bool RecordingIndex::readTrackFragment(BoxReader fragment) {
    BoxReader header = fragment.find(boxType("tfhd"));
    const uint32_t flags = header.u32();
    const uint32_t id = header.u32();
    const auto track = std::find_if(m_tracks.begin(), m_tracks.end(),
                                    [id](const RecordedTrack& known) { return known.id == id; });
    if (track == m_tracks.end() || (flags & kHasBaseOffset))
        return false;
    Run run{static_cast<size_t>(track - m_tracks.begin()), 0, 0, {}};
    Sample defaults = m_defaults[run.track];
    if (flags & kHasDescription)
        header.skip(4);
    if (flags & kHasTicks)
        defaults.ticks = header.u32();
    if (flags & kHasSize)
        defaults.size = header.u32();
    if (flags & kHasFlags)
        defaults.flags = header.u32();
    BoxReader time = fragment.find(boxType("tfdt"));
    run.startTicks = version(time.u32()) == 0 ? time.u32() : time.u64();
    BoxReader boxes = fragment;
    for (Box box; boxes.next(box);) {
        if (box.type != boxType("trun"))
            continue;
        if (!readRun(box.body, run, defaults))
            return false;
        for (const Sample& sample : m_runs.back().samples)
            run.startTicks += sample.ticks;
    }
    return header.isGood() && time.isGood() && boxes.isGood();
}

bool RecordingIndex::readRun(BoxReader table, Run run, const Sample& defaults) {
    const uint32_t flags = table.u32();
    const uint32_t count = table.u32();
    if (!(flags & kRunHasOffset) || count > kMaxSamples)
        return false;
    run.offset = m_boxStart + table.u32();
    const bool hasFirstFlags = flags & kRunHasFirstFlags;
    const uint32_t firstFlags = hasFirstFlags ? table.u32() : 0;
    for (uint32_t i = 0; i < count && table.isGood(); ++i) {
        Sample sample = defaults;
        if (flags & kRunHasTicks)
            sample.ticks = table.u32();
        if (flags & kRunHasSize)
            sample.size = table.u32();
        if (flags & kRunHasFlags)
            sample.flags = table.u32();
        else if (i == 0 && hasFirstFlags)
            sample.flags = firstFlags;
        if (flags & kRunHasShift)
            table.skip(4);
        run.samples.push_back(sample);
    }
    m_runs.push_back(std::move(run));
    return table.isGood();
}

bool RecordingIndex::takeRuns() {
    const uint64_t begin = m_boxStart + kHeaderBytes;
    const uint64_t end = m_boxStart + m_boxBytes;
    for (const Run& run : m_runs) {
        uint64_t runEnd = run.offset;
        for (const Sample& sample : run.samples)
            runEnd += sample.size;
        if (run.offset < begin || runEnd > end)
            return false;
    }
    for (const Run& run : m_runs)
        take(run);
    m_runs.clear();
    return true;
}

void RecordingIndex::take(const Run& run) {
    if (run.samples.empty())
        return;
    RecordedTrack& track = m_tracks[run.track];
    if (track.sizes.empty())
        track.startTicks = track.endTicks = run.startTicks;
    if (run.startTicks > track.endTicks)
        track.ticks.back() += static_cast<uint32_t>(run.startTicks - track.endTicks);
    track.endTicks = std::max(track.endTicks, run.startTicks);
    track.chunks.push_back({run.offset, static_cast<uint32_t>(run.samples.size())});
    for (const Sample& sample : run.samples) {
        if (!(sample.flags & kIsNoKey))
            track.keys.push_back(static_cast<uint32_t>(track.sizes.size()));
        track.sizes.push_back(sample.size);
        track.ticks.push_back(sample.ticks);
        track.endTicks += sample.ticks;
    }
}

}  // namespace orvelle
