#pragma once

#include <atomic>
#include <memory>

#include "media/player/playback_clock.h"
#include "media/stages/base_player_output.h"

class KvBasePlayerDecoderFrame;
class KvPcmPlayer;
class KvPlayerOutputThread;
class KvThread;

namespace orvelle {
class Pacing;
class SoundSchedule;
class VideoSurface;
}  // namespace orvelle

/// Shows the decoder's pictures in a view, paced by their times, and plays its sound.
///
/// Picture and sound have a thread each. Of a live source they are not synchronised: the view
/// follows the pictures' times, the sound follows its device. Of a recording both follow one clock.
/// Without a view or a sound player frames are taken and dropped.
class KvPlayerOutput : public KvBasePlayerOutput {
    Q_OBJECT
public:
    explicit KvPlayerOutput(QObject* parent = nullptr);
    ~KvPlayerOutput() override;  ///< stops

    double videoTime() override { return m_videoTime; }
    int start() override;
    void stop() override;
    int showVideo(AVFrame* frame, double seconds) override;
    int playAudio(AVFrame* frame, double seconds) override;
    bool isRunning() override;
    void flush() override {}
    void setVolume(double) override {}
    void requestStop() override;

    /// Borrowed; the view outlives the running output, also once another was set. Any thread.
    void setView(orvelle::VideoSurface* view) { m_view = view; }

    /// The loops of the presenting threads.
    void doShowVideo(KvThread& thread);
    void doPlayAudio(KvThread& thread);

protected:
    /// Borrowed; before start(). The sound thread starts it.
    void setSoundPlayer(KvPcmPlayer* player) { m_soundPlayer = player; }

private:
    void showLive(KvThread& thread);
    void present(KvBasePlayerDecoderFrame* frame, orvelle::Pacing& pacing, KvThread& thread);
    void showRecording(KvThread& thread);
    void presentWhenDue(KvBasePlayerDecoderFrame* frame, KvThread& thread);
    void waitForRecording(KvThread& thread);
    bool isRecording() const;
    void playInStep(const KvBasePlayerDecoderFrame& frame, orvelle::SoundSchedule& schedule,
                    KvThread& thread);
    bool waitForTurn(double seconds, KvThread& thread);

    std::atomic<orvelle::VideoSurface*> m_view{nullptr};
    KvPcmPlayer* m_soundPlayer = nullptr;  ///< fixed while threads run, as the two below
    std::unique_ptr<KvPlayerOutputThread> m_videoThread;
    std::unique_ptr<KvPlayerOutputThread> m_audioThread;

    orvelle::PlaybackClock m_clock;  ///< of a recording
    std::atomic<double> m_videoTime{-1.0};
    // Picture thread.
    uint32_t m_shownCount = 0;  ///< since start()
    bool m_hasShown = false;    ///< ever: the end may come while the output is paused
    double m_stepSec = 0.0;     ///< between the last two pictures of a recording
    bool m_isDry = false;       ///< the recording has none when one is due
    int m_standingLooks = 0;    ///< sound thread: at a clock that stands for good
};
