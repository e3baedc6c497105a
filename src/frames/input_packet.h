#pragma once

#include <QObject>

#include "frames/ffmpeg_ptr.h"

/// One compressed access unit on its way from an input to a decoder or recorder.
/// Touched by one thread at a time; ownership travels with the pointer.
class KvBasePlayerInputPacket : public QObject {
    Q_OBJECT
public:
    enum MediaType { kUnknownMedia = 0, kVideo = 1, kAudio = 2 };

    KvBasePlayerInputPacket();
    /// References `source`'s payload; null leaves packet() null.
    KvBasePlayerInputPacket(const AVPacket* source, int codecId, int mediaType, double timeSec);
    explicit KvBasePlayerInputPacket(const AVPacket* source);

    /// A packet with a padded copy of `size` bytes; null when out of memory or size < 0.
    static std::unique_ptr<KvBasePlayerInputPacket> copyOf(const void* data, int size, bool isKey,
                                                           int codecId, int mediaType,
                                                           double timeSec);
    /// A packet of its own buffer: same bytes, flags, codec, medium and time.
    std::unique_ptr<KvBasePlayerInputPacket> deepCopy() const;
    /// Another packet on the same bytes, which nobody may change then; null when out of memory.
    std::unique_ptr<KvBasePlayerInputPacket> reference() const;

    AVPacket* packet() const { return m_packet.get(); }
    int codecId() const { return m_codecId; }  ///< an AVCodecID
    int mediaType() const { return m_mediaType; }
    double time() const { return m_timeSec; }  ///< presentation time in seconds
    void setTime(double timeSec) { m_timeSec = timeSec; }
    /// A picture that would look smeared: one that it refers to was lost.
    bool followsLoss() const { return m_followsLoss; }
    void setFollowsLoss(bool follows) { m_followsLoss = follows; }
    bool isVideo() const { return m_mediaType == kVideo; }
    bool isKey() const { return m_packet && (m_packet->flags & AV_PKT_FLAG_KEY); }

private:
    orvelle::PacketPtr m_packet;
    int m_codecId = 0;
    int m_mediaType = kUnknownMedia;
    double m_timeSec = 0.0;
    bool m_followsLoss = false;
};
