#pragma once

#include <QDateTime>
#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "frames/input_packet.h"
#include "media/recording/recording_file.h"
#include "media/recording/recording_source.h"
#include "media/stages/packet_group.h"

namespace orvelle {

/// Turns the packets of a stream into a file, or into several where its codecs or their parameters
/// change: "NAME", "NAME-2", ... Each begins with the key picture that was the newest when it
/// became necessary, so that no moment is missing between two. Belongs to one thread.
class RecordingWriter {
public:
    using Packet = KvBasePlayerInputPacket;
    struct Events {
        std::function<void(const QString& path)> created;
        std::function<void(double seconds)> pictureWritten;
    };

    /// `source` is borrowed.
    RecordingWriter(RecordingSource& source, const QString& path, const QString& formatName,
                    Events events);

    void setBegunAt(const QDateTime& time) { m_begunAt = time; }  ///< before the first packet

    /// 0, or the FFmpeg error that ended the recording. A file is begun when what is needed for it
    /// is known, at the latest a second after its first picture.
    int write(std::unique_ptr<Packet> packet);
    /// Nothing follows: writes what waits and closes. 0 or an error.
    int close();

    const QStringList& files() const { return m_files; }  ///< that were created and kept
    bool hasBegun() const { return m_hasBegun; }
    /// Sound comes that the last file does not hold.
    bool lacksSound() const { return m_lacksSound; }

private:
    bool belongsElsewhere(const Packet& packet) const;
    bool isOtherPicture(const Packet& packet) const;
    bool isOtherSound(const Packet& packet) const;
    bool isSoundOfFile(const Packet& packet) const;
    int beginNext(const Packet& packet);
    int take(std::unique_ptr<Packet> packet);
    bool isReady();
    bool isVideoKnown(const Packet& key);
    bool isSoundKnown() const;
    const Packet* pendingSound() const;
    int begin();
    int create(const Packet& key);
    int put(Packet& packet);
    int closeFile();

    RecordingSource& m_source;
    const QString m_path;
    const QString m_formatName;
    const Events m_events;
    QDateTime m_begunAt;

    PacketGroup m_group;
    std::deque<std::unique_ptr<Packet>> m_pending;  ///< for the file that is not begun yet
    QElapsedTimer m_sincePending;
    std::unique_ptr<RecordingFile> m_file;
    QStringList m_files;
    bool m_hasBegun = false;
    bool m_lacksSound = false;

    // Of the present file.
    int m_videoId = 0;
    std::vector<uint8_t> m_parameterSets;
    int m_soundId = -1;                     ///< -1: it has no sound
    std::optional<uint32_t> m_soundFormat;  ///< of AdtsFilter, once a packet came

    double m_formerSec = 0.0;      ///< recorded before the present file's first picture
    double m_fileCameraSec = 0.0;  ///< the camera's time of that picture
};

}  // namespace orvelle
