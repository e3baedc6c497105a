#pragma once

#include "core/thread.h"
#include "media/player/player_output.h"

/// A presenting thread of an output, which owns and outlives it.
class KvPlayerOutputThread : public KvThread {
public:
    KvPlayerOutputThread(const QString& name, KvPlayerOutput& output)
        : KvThread(name), m_output(output) {}

    void run() override {
        present();
        stop();
    }

protected:
    virtual void present() = 0;

    KvPlayerOutput& m_output;
};

class KvPlayerOutputVideoThread : public KvPlayerOutputThread {
public:
    explicit KvPlayerOutputVideoThread(KvPlayerOutput& output)
        : KvPlayerOutputThread(QStringLiteral("show-video"), output) {}

protected:
    void present() override { m_output.doShowVideo(*this); }
};

class KvPlayerOutputAudioThread : public KvPlayerOutputThread {
public:
    explicit KvPlayerOutputAudioThread(KvPlayerOutput& output)
        : KvPlayerOutputThread(QStringLiteral("play-audio"), output) {}

protected:
    void present() override { m_output.doPlayAudio(*this); }
};
