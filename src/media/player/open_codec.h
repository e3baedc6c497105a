#pragma once

#include <atomic>
#include <cstddef>

#include "frames/ffmpeg_ptr.h"

class KvBasePlayerInput;

namespace orvelle {

/// The codec of one medium that a decoding thread has open, with its work frame.
///
/// The context is the input's own when the input brings one, else made here: one thread, no more
/// pixels than a camera has, and 8000 Hz mono for sound formats that do not say. Belongs to its
/// decoding thread.
class OpenCodec {
public:
    /// `mediaKind` is a KvBasePlayerInput::MediaKind; `input` is borrowed.
    OpenCodec(KvBasePlayerInput& input, int mediaKind);
    ~OpenCodec();
    OpenCodec(const OpenCodec&) = delete;
    OpenCodec& operator=(const OpenCodec&) = delete;

    bool isOpen(int codecId) const { return context() && m_codecId == codecId; }
    /// Closes what is open and opens `codecId`. A codec refused last time is refused again at
    /// once unless `mayRetry`; a run of refusals logs one line. `bitsPerSample` is for G.726.
    bool open(int codecId, bool mayRetry, int bitsPerSample = 0);
    void close();

    /// Null when none is open. Any thread may read the pointer, only the owner follow it.
    AVCodecContext* context() const { return m_context; }
    AVFrame* frame() const { return m_frame.get(); }

    /// 0 or an FFmpeg error.
    int send(const AVPacket& packet);
    /// Fills frame(): 0, AVERROR(EAGAIN) when the packets sent give no more, or an error.
    int receive();
    /// Forgets reference pictures and whatever the decoder holds back.
    void reset();

private:
    int tryOpen(int codecId, int bitsPerSample);
    AVCodecContext* makeContext(int codecId, int bitsPerSample);
    void logRefusal(int codecId, int error) const;

    KvBasePlayerInput& m_input;
    const int m_mediaKind;
    int m_codecId = AV_CODEC_ID_NONE;
    int m_refusedId = -1;
    std::atomic<AVCodecContext*> m_context{nullptr};  ///< orders nothing
    const AVCodec* m_codec = nullptr;
    FramePtr m_frame;
};

/// Bits of a G.726 code word (2 to 5), from the bytes of a packet and the seconds until the next
/// one: neither the format nor the camera says it. 4, the standard's usual rate, when that
/// makes no sense.
int g726BitsPerSample(size_t bytes, double seconds);

}  // namespace orvelle
