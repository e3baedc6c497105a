#pragma once

#include <QDateTime>

#include <memory>
#include <optional>

#include "media/player/view_player.h"
#include "media/stages/playback_end.h"

class KvTUTKDevice;
class KvTUTKPlaybackInput;

/// Plays a recording of a camera's memory card from a given moment on. Used by one thread, the
/// interface's; the device and the view are borrowed and outlive a running player.
///
/// Progress is counted from that moment, in seconds, and is that of the picture shown. The end of
/// the recording comes as KvBasePlayerVideoEnded after its last picture; a refusal and a lost
/// camera as KvBasePlayerOpenFailed, after which KvBasePlayerVideoEnded may still follow.
class KvTUTKPlayer : public orvelle::ViewPlayer {
    Q_OBJECT
public:
    explicit KvTUTKPlayer(QObject* parent = nullptr);
    ~KvTUTKPlayer() override;  ///< shuts down

    /// Each takes effect with the next play().
    void setDevice(KvTUTKDevice* device);
    void setStartTime(const QDateTime& time);
    KvTUTKDevice* device() const { return m_device; }
    /// When the recording that holds the start time begins. Without it a camera that starts at an
    /// earlier picture is believed to start at that moment.
    void setRecordingStart(const QDateTime& time);

    /// Tells what an event means; kNone once shut down.
    orvelle::PlaybackEnd endReason() const;

    /// Nothing is skipped between pause() and resume(): the decoder waits with what it has, and
    /// the input collects what the camera still sends.
    void pause() override;
    /// Waits for the player's own threads only: the one that takes the playback down ends by
    /// itself, before the next playback begins or another device is set.
    void stop() override;
    /// The moment of the picture shown last, in seconds from the start time.
    double outputTime() override;

    std::unique_ptr<KvBasePlayerInput> createInput() override;
    void releaseInput() override;

private:
    KvTUTKDevice* m_device = nullptr;
    QDateTime m_startTime;
    QDateTime m_recordingStart;
    std::optional<int32_t> m_baseMinute;               ///< of the device's clock, once told
    KvTUTKPlaybackInput* m_playbackInput = nullptr;    ///< the base's input stage, or null
    std::unique_ptr<KvBasePlayerInput> m_formerInput;  ///< ends by itself
};
