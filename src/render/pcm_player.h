#pragma once

#include <QAudioFormat>
#include <QObject>

#include <memory>
#include <optional>
#include <vector>

#include "render/sound_format.h"

class KvAudioConverter;
struct AVFrame;

namespace orvelle {
class SoundStream;
}  // namespace orvelle

/// Plays sound on the computer's default output.
///
/// The device itself is opened, fed and closed on one sound thread of the process, so that neither
/// a slow sound server holds up the interface nor two threads share a device. A server that dies
/// or appears late is opened again by later writes. Nothing is opened while muted.
///
/// stop() and setVolume() belong to the owner; start(), write() and writeFrame() to one writing
/// thread, which must do neither during stop(); interrupt() and the flags to any thread.
class KvPcmPlayer : public QObject {
    Q_OBJECT
public:
    explicit KvPcmPlayer(QObject* parent = nullptr);
    ~KvPcmPlayer() override;  ///< stops too

    /// Opens the default device and waits for it: 0, or -1 when there is none or it refuses. A
    /// sound server that does not answer within a moment counts as opened and is used once it
    /// answers.
    int start();
    /// Opens the default device with `format`, forced to signed 16 bits and at most two channels,
    /// or with the nearest that the device supports.
    int openFormat(const QAudioFormat& format);
    /// Closes the device.
    void stop();

    /// Blocks until the device took all bytes, interrupt() was called or the sound was muted (0);
    /// `length` at once when muted before; -1 without a device.
    int write(const void* data, int length);
    /// The same for one decoded frame, converted where it differs from the device's format: 0, or
    /// -1 without a format or for a frame that makes no sense.
    int writeFrame(const AVFrame* frame);
    /// The same for so much silence.
    int writeSilence(int64_t microseconds);

    /// 0.0 mutes, 1.0 is the full level.
    void setVolume(float volume);
    float volume() const;
    bool isMuted() const { return volume() == 0.0f; }

    /// Ends a blocked write and all later ones until the next start().
    void interrupt();
    bool isInterrupted() const;
    /// Whether opening failed, the device was lost or stop() was called.
    bool isClosed() const;

private:
    int open(const std::optional<QAudioFormat>& format);
    int writeConverted(const AVFrame* frame, const orvelle::SoundFormat& format);

    std::unique_ptr<orvelle::SoundStream> m_stream;  ///< lives on the sound thread

    // Writing thread; then whoever destroys this.
    bool m_usesThread = false;
    std::unique_ptr<KvAudioConverter> m_converter;  ///< created on first need
    orvelle::SoundFormat m_converterFormat;
    std::vector<char> m_chunks;  ///< what one frame adds; kept to spare allocations
};
