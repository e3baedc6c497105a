#include "media/recording/recorded_samples.h"

#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <numeric>

#include "frames/ffmpeg_io_ptr.h"

namespace orvelle {

namespace {

/// How long a picture lasts that is alone in its track.
constexpr int kPicturesPerSec = 25;

InputFormatPtr openFragments(const QString& path) {
    AVDictionary* options = nullptr;
    av_dict_set(&options, "ignore_editlist", "1", 0);
    AVFormatContext* opened = nullptr;
    const QByteArray url = "file:" + path.toUtf8();
    avformat_open_input(&opened, url.constData(), av_find_input_format("mov"), &options);
    av_dict_free(&options);
    return InputFormatPtr(opened);
}

/// With every stream discarded the library goes from table to table and reads no sample.
void readTables(AVFormatContext& format) {
    for (unsigned i = 0; i < format.nb_streams; ++i)
        format.streams[i]->discard = AVDISCARD_ALL;
    const PacketPtr packet(av_packet_alloc());
    while (packet && av_read_frame(&format, packet.get()) >= 0)
        av_packet_unref(packet.get());
}

bool isWhole(const AVIndexEntry& entry, int64_t fileBytes) {
    return entry.size > 0 && entry.pos > 0 && entry.pos <= fileBytes - entry.size;
}

class TrackReader {
public:
    explicit TrackReader(const AVStream& stream) {
        m_track.ticksPerSec = static_cast<uint32_t>(std::max(stream.time_base.den, 0));
    }

    void take(const AVIndexEntry& entry) {
        if (m_track.sizes.empty())
            m_track.startTicks = static_cast<uint64_t>(std::max<int64_t>(entry.timestamp, 0));
        else
            m_track.ticks.push_back(stepTo(entry.timestamp));
        if (entry.flags & AVINDEX_KEYFRAME)
            m_track.keys.push_back(static_cast<uint32_t>(m_track.sizes.size()));
        const auto offset = static_cast<uint64_t>(entry.pos);
        if (m_track.sizes.empty() || offset != m_endBytes)
            m_track.chunks.push_back({offset, 0});
        ++m_track.chunks.back().samples;
        m_track.sizes.push_back(static_cast<uint32_t>(entry.size));
        m_endBytes = offset + static_cast<uint64_t>(entry.size);
        m_lastTicks = entry.timestamp;
    }

    /// Nothing tells how long the last sample lasts: as long as the one before.
    RecordedTrack finish() {
        if (!m_track.sizes.empty())
            m_track.ticks.push_back(m_track.ticks.empty() ? m_track.ticksPerSec / kPicturesPerSec
                                                          : m_track.ticks.back());
        return std::move(m_track);
    }

private:
    uint32_t stepTo(int64_t ticks) const {
        const int64_t step = std::max<int64_t>(ticks - m_lastTicks, 0);
        return static_cast<uint32_t>(std::min<int64_t>(step, std::numeric_limits<int32_t>::max()));
    }

    RecordedTrack m_track;
    int64_t m_lastTicks = 0;
    uint64_t m_endBytes = 0;
};

}  // namespace

uint64_t RecordedTrack::lengthTicks() const {
    return std::accumulate(ticks.begin(), ticks.end(), uint64_t{0});
}

RecordedSamples readSamples(const QString& path) {
    const int64_t fileBytes = QFileInfo(path).size();
    RecordedSamples samples;
    const InputFormatPtr format = openFragments(path);
    if (!format)
        return samples;
    readTables(*format);
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        AVStream& stream = *format->streams[i];
        TrackReader reader(stream);
        for (int entry = 0; entry < avformat_index_get_entries_count(&stream); ++entry) {
            const AVIndexEntry& sample = *avformat_index_get_entry(&stream, entry);
            if (!isWhole(sample, fileBytes))
                continue;
            reader.take(sample);
            samples.endBytes =
                std::max(samples.endBytes, static_cast<uint64_t>(sample.pos + sample.size));
        }
        samples.tracks.push_back(reader.finish());
        samples.hasPicture =
            samples.hasPicture || (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
                                   !samples.tracks.back().keys.empty());
    }
    return samples;
}

}  // namespace orvelle
