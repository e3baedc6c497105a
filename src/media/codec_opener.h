#pragma once

#include "frames/ffmpeg_ptr.h"

class KvBasePlayerInput;

namespace orvelle {

/// The codec of one medium that a decoding thread has open, with its work frame.
///
/// The context is the input's own when the input brings one, else made here. Belongs to its
/// decoding thread; the pointer that context() gives may be read by any.
class OpenCodec {
public:
    /// `mediaKind` is a KvBasePlayerInput::MediaKind; `input` is borrowed.
    OpenCodec(KvBasePlayerInput& input, int mediaKind);
    ~OpenCodec();
    OpenCodec(const OpenCodec&) = delete;
    OpenCodec& operator=(const OpenCodec&) = delete;

    /// Closes what is open and opens `codecId`; `packetBytes` of the first packet helps where a
    /// format does not say its parameters. 0 or an FFmpeg error; then nothing is open.
    int open(int codecId, int packetBytes);
    void close();

    int codecId() const { return m_codecId; }  ///< 0 when none is open
    AVCodecContext* context() const { return m_context; }
    AVFrame* frame() const { return m_frame.get(); }

    /// 0 or an FFmpeg error.
    int send(const AVPacket* packet);
    /// Fills frame(): 0, AVERROR(EAGAIN) when no more comes of the packets sent, or an error.
    int receive();
    /// Forgets reference pictures and whatever the decoder holds back.
    void reset();

private:
    int openOwn(int packetBytes);

    KvBasePlayerInput& m_input;
    const int m_mediaKind;
    int m_codecId = 0;
    bool m_inputOwned = false;
    AVCodecContext* m_context = nullptr;  ///< owned unless m_inputOwned
    const AVCodec* m_codec = nullptr;
    FramePtr m_frame;
};

}  // namespace orvelle
