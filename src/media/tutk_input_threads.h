#pragma once

#include "core/thread.h"
#include "media/tutk_input.h"

/// A receive thread of a live input, which owns and outlives it.
class KvTUTKInputThread : public KvThread {
public:
    KvTUTKInputThread(const QString& name, KvTUTKInput& input) : KvThread(name), m_input(input) {}

    void run() override {
        receive();
        stop();
        m_input.receiveEnded();
    }

protected:
    virtual void receive() = 0;

    KvTUTKInput& m_input;
};

class KvTUTKInputRecvVideoThread : public KvTUTKInputThread {
public:
    explicit KvTUTKInputRecvVideoThread(KvTUTKInput& input)
        : KvTUTKInputThread(QStringLiteral("recv-video"), input) {}

protected:
    void receive() override { m_input.doRecvVideo(*this); }
};

class KvTUTKInputRecvAudioThread : public KvTUTKInputThread {
public:
    explicit KvTUTKInputRecvAudioThread(KvTUTKInput& input)
        : KvTUTKInputThread(QStringLiteral("recv-audio"), input) {}

protected:
    void receive() override { m_input.doRecvAudio(*this); }
};
