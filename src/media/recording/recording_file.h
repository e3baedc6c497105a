#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <memory>

#include "frames/ffmpeg_io_ptr.h"
#include "media/recording/recording_clock.h"
#include "media/recording/recording_sink.h"
#include "media/recording/recording_sound_encoder.h"
#include "media/stages/adts_filter.h"
#include "media/stages/stream_parameters.h"

class KvBasePlayerInputPacket;

namespace orvelle {

/// A media file being written: one picture track and, where the sound can be decoded, one sound
/// track. Packets are copied in as they are, but for sound that the format cannot hold, which
/// becomes AAC. Belongs to one thread.
///
/// MP4 and MOV files are written in fragments of half a second and are on their disk a second
/// later, so that they play however the recording ends; close() makes ordinary files of them. The
/// first picture packet, a key picture, fixes the origin of both tracks' times. It is not written
/// until the next picture comes, and then one tick after the origin; no other packet is written
/// whose time does not advance.
class RecordingFile {
public:
    RecordingFile();
    ~RecordingFile();  ///< closes
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    /// Creates the file and writes its header. `video.codec` holds the parameter sets as
    /// extradata; `sound` may be empty. `soundSample`, a packet of that sound, spares AAC from
    /// being encoded anew; it may be null. `begunAt` is when the first picture was made. A name
    /// that is taken gets "-2", "-3", ... Returns 0 or an FFmpeg error, and then leaves no file
    /// behind.
    int create(const QString& path, const QString& formatName, const StreamParameters& video,
               const StreamParameters& sound, const KvBasePlayerInputPacket* soundSample,
               const QDateTime& begunAt = QDateTime::currentDateTimeUtc());
    bool isOpen() const { return m_format != nullptr; }
    QString path() const { return m_path; }  ///< of the file really written

    /// 0 or the FFmpeg error that spoiled the file; take the packet's bytes over. Sound that has
    /// no place in the file is dropped.
    int writeVideo(KvBasePlayerInputPacket& packet);
    int writeSound(KvBasePlayerInputPacket& packet);
    double recordedSec() const { return m_video.clock.lineSec(); }

    bool hasSound() const { return m_sound.stream != nullptr; }

    /// Ends the file; 0 or the first error since it was created. A file without a picture that can
    /// be decoded is of no use and is deleted.
    int close();
    bool isKept() const { return m_isKept; }  ///< whether close() left a file
    /// Deletes the file instead of ending it.
    void discard();

private:
    struct Track {
        AVStream* stream = nullptr;  ///< owned by m_format
        RecordingClock clock;
        int64_t lastTicks = 0;
        PacketPtr held;  ///< waits for the next one, which tells how long it lasts
    };

    int addVideo(const StreamParameters& video);
    void addSound(const StreamParameters& sound, const KvBasePlayerInputPacket* sample);
    StreamParameters chooseSound(const StreamParameters& sound,
                                 const KvBasePlayerInputPacket* sample);
    AVStream* addStream(const StreamParameters& source);
    bool canHold(AVCodecID codec) const;
    bool canCopySound(const AVCodecParameters& sound) const;
    int openFile(const QString& path);
    int writeHeader();
    bool startSound(double cameraSec);
    int writeOpening();
    int writeEncoded(AVPacket& packet, double cameraSec);
    /// Sets the packet's place in the file; false when it is not to be written.
    bool stamp(Track& track, const KvBasePlayerInputPacket& packet);
    int hold(Track& track, AVPacket& packet);
    int write(AVPacket& packet);
    int writeHeld(Track& track);
    void release();

    std::unique_ptr<RecordingSink> m_sink;  ///< outlives m_format, which writes to it
    OutputFormatPtr m_format;
    bool m_hasFragments = false;
    Track m_video;
    Track m_sound;
    int m_soundId = -1;  ///< the codec of the packets that become the sound track
    AdtsFilter m_adts;
    RecordingSoundEncoder m_encoder;
    QString m_path;
    PacketPtr m_opening;  ///< the first key picture, until another picture follows it
    bool m_isKept = false;
    bool m_hasRefused = false;  ///< a packet was left out, and that was logged
};

}  // namespace orvelle
