#pragma once

#include <QString>

#include <cstdint>

#include "frames/ffmpeg_io_ptr.h"
#include "media/recording_clock.h"
#include "media/stream_parameters.h"

class KvBasePlayerInputPacket;

namespace orvelle {

/// A media file being written: one picture track and, where the format can hold the sound, one
/// sound track. Packets are copied in as they are. Belongs to one thread.
///
/// The first picture packet fixes the origin of both tracks' times and is not written itself, nor
/// is any packet whose time does not advance.
class RecordingFile {
public:
    RecordingFile() = default;
    ~RecordingFile();  ///< closes
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    /// Creates the file and writes its header. `video.codec` holds the parameter sets as
    /// extradata; `sound` may be empty. A name that is taken gets "-2", "-3", ... Returns 0 or an
    /// FFmpeg error, and then leaves no file behind.
    int create(const QString& path, const QString& formatName, const StreamParameters& video,
               const StreamParameters& sound);
    bool isOpen() const { return m_format != nullptr; }
    QString path() const { return m_path; }  ///< of the file really written

    /// 0 or the FFmpeg error that spoiled the file; take the packet's bytes over. Sound that has
    /// no place in the file is dropped.
    int writeVideo(KvBasePlayerInputPacket& packet);
    int writeSound(KvBasePlayerInputPacket& packet);
    double recordedSec() const { return m_video.clock.lineSec(); }

    /// Writes the trailer and closes; 0 or the first error.
    int close();

private:
    struct Track {
        AVStream* stream = nullptr;  ///< owned by m_format
        RecordingClock clock;
        int64_t lastTicks = 0;
    };

    int addVideo(const StreamParameters& video);
    void addSound(const StreamParameters& sound);
    AVStream* addStream(const StreamParameters& source);
    bool canHold(AVCodecID codec) const;
    int openFile(const QString& path);
    bool startSound(double cameraSec);
    /// Sets the packet's place in the file; false when it is not to be written.
    bool stamp(Track& track, const KvBasePlayerInputPacket& packet);
    int write(AVPacket& packet);

    OutputFormatPtr m_format;
    Track m_video;
    Track m_sound;
    QString m_path;
    bool m_hasRefused = false;  ///< a packet was left out, and that was logged
};

}  // namespace orvelle
