#pragma once

#include "media/card/tutk_playback_input.h"
#include "media/stages/input_thread.h"

/// A worker of a playback input.
class KvTUTKPlaybackInputThread : public orvelle::InputThread<KvTUTKPlaybackInput> {
public:
    using InputThread::InputThread;
};

class KvTUTKPlaybackOpenThread : public KvTUTKPlaybackInputThread {
public:
    explicit KvTUTKPlaybackOpenThread(KvTUTKPlaybackInput& input)
        : KvTUTKPlaybackInputThread(QStringLiteral("open-playback"), input) {}

protected:
    void work() override { m_input.doOpen(); }
    void ended() override { m_input.openEnded(); }
};

class KvTUTKPlaybackInputRecvVideoThread : public KvTUTKPlaybackInputThread {
public:
    explicit KvTUTKPlaybackInputRecvVideoThread(KvTUTKPlaybackInput& input)
        : KvTUTKPlaybackInputThread(QStringLiteral("recv-video"), input) {}

protected:
    void work() override { m_input.doRecvVideo(*this); }
};

class KvTUTKPlaybackInputRecvAudioThread : public KvTUTKPlaybackInputThread {
public:
    explicit KvTUTKPlaybackInputRecvAudioThread(KvTUTKPlaybackInput& input)
        : KvTUTKPlaybackInputThread(QStringLiteral("recv-audio"), input) {}

protected:
    void work() override { m_input.doRecvAudio(*this); }
};
