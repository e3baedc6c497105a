#pragma once

#include <QObject>

#include "frames/ffmpeg_ptr.h"

/// One decoded picture or block of samples; shares the decoder's buffers by reference.
class KvBasePlayerDecoderFrame : public QObject {
    Q_OBJECT
public:
    /// References `source`; null leaves frame() null.
    KvBasePlayerDecoderFrame(const AVFrame* source, double timeSec);

    AVFrame* frame() const { return m_frame.get(); }
    double time() const { return m_timeSec; }  ///< seconds, of the packet that produced it

private:
    orvelle::FramePtr m_frame;
    double m_timeSec;
};
