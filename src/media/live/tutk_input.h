#pragma once

#include <memory>
#include <mutex>

#include "media/stages/byte_rate.h"
#include "media/stages/channel_input.h"

class KvTUTKDevice;
class KvTUTKInputThread;

/// Live picture and sound of one camera.
///
/// open() asks the camera to stream and starts a video and an audio receive thread; each puts
/// packets into its own queue and throws backlog away, so that the live view never lags. Both are
/// bound to the AV channel that the device has at open(): when that ends they end, event kLost is
/// raised once, and the owner opens a new input on the device's next session.
class KvTUTKInput : public orvelle::ChannelInput {
    Q_OBJECT
public:
    explicit KvTUTKInput(QObject* parent = nullptr);
    ~KvTUTKInput() override;  ///< closes

    int open() override;
    void close() override;
    int speed() override;
    bool isRunning() override;
    void setSoundWanted(bool isWanted) override;
    void learnSound() override;
    void requestStop() override;

    /// Before open(); borrowed, outlives the input.
    virtual void setDevice(KvTUTKDevice* device);
    virtual int startDevice();
    virtual void stopDevice();
    virtual void startThreads();
    virtual void stopThreads();

    /// The loops of the receive threads.
    void doRecvVideo(KvThread& thread);
    void doRecvAudio(KvThread& thread);
    /// Told by a receive thread whose loop is over and which counts as stopped.
    void receiveEnded();

protected:
    bool isSoundResting() const override { return m_isSoundResting; }
    void channelEnded(MediaKind kind) override;
    void boundVideo(const KvThread& thread) override;
    void boundAudio(const KvThread& thread) override;
    void storeVideo(std::unique_ptr<Packet> packet) override;
    void storeAudio(std::unique_ptr<Packet> packet) override;

private:
    void followSound();

    KvTUTKDevice* m_device = nullptr;  ///< fixed between open() and close(), as below
    std::unique_ptr<KvTUTKInputThread> m_videoThread;
    std::unique_ptr<KvTUTKInputThread> m_audioThread;

    orvelle::ByteRate m_rate;

    std::mutex m_soundMutex;  ///< guards the next one and the order of the requests for sound
    bool m_isSoundWanted = true;

    // These order nothing, and are written under m_soundMutex.
    std::atomic<int> m_soundFramesToLearn{0};   ///< that come before the sound may rest
    std::atomic<bool> m_isSoundResting{false};  ///< the camera was told to stop it
};
