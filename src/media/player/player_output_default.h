#pragma once

#include "media/player/player_output.h"

/// The output of every player: brings its own sound player.
class KvPlayerOutputDefault : public KvPlayerOutput {
    Q_OBJECT
public:
    explicit KvPlayerOutputDefault(QObject* parent = nullptr);
    ~KvPlayerOutputDefault() override;  ///< stops

    int start() override;
    void stop() override;
    void setVolume(double value) override;
    void requestStop() override;

private:
    KvPcmPlayer* const m_pcm;  ///< a QObject child
};
