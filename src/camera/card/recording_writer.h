#pragma once

#include <QString>

#include <optional>

#include "camera/encoding/adts.h"
#include "camera/feed/encoded_frame.h"
#include "camera/feed/feed.h"
#include "frames/ffmpeg_io_ptr.h"

namespace orvelle {

/// What a recording must know of its sound beforehand.
struct RecordedSound {
    uint16_t codecId = 0;
    std::optional<AdtsFormat> adts;  ///< of AAC

    /// Of a frame of sound; nothing for what a recording cannot hold.
    static std::optional<RecordedSound> of(const EncodedFrame& frame);
    bool operator==(const RecordedSound& other) const;
};

/// Describes a video stream of Annex B frames in a file to be written, by a key frame of it;
/// false when that holds no parameter sets.
bool describeVideo(AVStream* stream, const FeedFormat& format, const EncodedFrame& key);

/// Writes frames as they are sent to a Matroska file that can be played up to the last second at
/// any moment, however the program ends. One thread.
class RecordingWriter {
public:
    RecordingWriter();

    /// Replaces `path`. `key` is the first frame to come. Empty on success, else the reason.
    QString open(const QString& path, const FeedFormat& format, const EncodedFrame& key,
                 const std::optional<RecordedSound>& sound);
    bool isOpen() const { return m_format != nullptr; }

    /// `timeMs` from the recording's start. Sound of another kind than announced is left out.
    /// False when the file takes nothing more.
    bool write(const EncodedFrame& frame, int64_t timeMs);
    /// False when not everything was written.
    bool close();
    /// Why the last call failed.
    QString error() const;

private:
    bool addSound(const RecordedSound& sound);
    bool hasFailed();

    OutputFormatPtr m_format;
    PacketPtr m_packet;
    std::optional<RecordedSound> m_sound;
    int64_t m_lastMs[2] = {0, 0};  ///< by medium
    int m_result = 0;              ///< the first complaint
};

}  // namespace orvelle
