#include "frames/decoder_frame.h"

KvBasePlayerDecoderFrame::KvBasePlayerDecoderFrame(const AVFrame* source, double timeSec)
    : m_frame(source ? av_frame_clone(source) : nullptr), m_timeSec(timeSec) {}
