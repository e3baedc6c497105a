#pragma once

#include "media/live/tutk_input.h"
#include "media/stages/input_thread.h"

/// A receive thread of a live input.
class KvTUTKInputThread : public orvelle::InputThread<KvTUTKInput> {
public:
    using InputThread::InputThread;

protected:
    void ended() override { m_input.receiveEnded(); }
};

class KvTUTKInputRecvVideoThread : public KvTUTKInputThread {
public:
    explicit KvTUTKInputRecvVideoThread(KvTUTKInput& input)
        : KvTUTKInputThread(QStringLiteral("recv-video"), input) {}

protected:
    void work() override { m_input.doRecvVideo(*this); }
};

class KvTUTKInputRecvAudioThread : public KvTUTKInputThread {
public:
    explicit KvTUTKInputRecvAudioThread(KvTUTKInput& input)
        : KvTUTKInputThread(QStringLiteral("recv-audio"), input) {}

protected:
    void work() override { m_input.doRecvAudio(*this); }
};
