#pragma once

#include "link/av.h"
#include "link/client/frame_queue.h"
#include "link/client/local_port.h"
#include "link/client/session.h"
#include "link/transport/sealed_socket.h"

#include <condition_variable>
#include <deque>

namespace orvelle {

/// One AV channel of a session: its sockets and what came in on them. Channel 0 holds the
/// session's control socket as well.
///
/// The receive thread fills it, the readers of av.h empty it; both may be on any thread.
class ClientChannel {
public:
    ClientChannel(std::shared_ptr<ClientSession> session, int number,
                  std::shared_ptr<LocalPort> port, std::shared_ptr<SealedSocket> control,
                  std::shared_ptr<SealedSocket> media);

    int number() const { return m_number; }
    ClientSession& session() const { return *m_session; }
    SRTSOCKET controlId() const { return m_controlId; }
    SRTSOCKET mediaId() const { return m_mediaId; }

    // --- receive thread ---

    /// What a message means for the channel; frames and control messages go to their queues.
    enum class Outcome { Fine, Goodbye, Broken };
    Outcome accept(const EncodedMessage& bytes);
    /// Whether data came in since the last call, also such as wait for the repair of a loss: on
    /// an overfull path nothing else may show for seconds that the camera is there.
    bool hasDataArrived();
    /// Readers get what waits and then `reason`; the first reason stays.
    void end(int reason);

    // --- readers ---

    int endReason() const;
    /// The sockets, of which channel 0 has two; empty once they were taken for closing.
    std::vector<std::shared_ptr<SealedSocket>> sockets() const;
    std::vector<std::shared_ptr<SealedSocket>> takeSockets();

    int sendControl(uint32_t type, const char* data, int size);
    int receiveControl(uint32_t* type, char* buffer, int maxSize, uint32_t timeoutMs,
                       const AvStopCheck& stop);
    /// Takes a frame, or returns the code of av.h that says why not.
    int takeVideo(LinkFrame* frame, uint32_t* number);
    int takeAudio(LinkFrame* frame, uint32_t* number);
    int waitingAudio() const;
    void waitVideo(int timeoutMs, const AvStopCheck& stop);
    void waitAudio(int moreThan, int timeoutMs, const AvStopCheck& stop);
    void discardMedia();
    void noteVideoDropped();
    uint32_t lostVideoFrames() const;

    /// Makes every waiting call look again.
    void wake();

private:
    struct Control {
        uint32_t type;
        std::vector<uint8_t> data;
    };

    void acceptFragment(const FrameFragment& fragment);
    void acceptControl(const ControlMessage& message);
    int take(FrameQueue& queue, LinkFrame* frame, uint32_t* number);
    int reasonLocked() const;

    // Fixed after construction.
    const std::shared_ptr<ClientSession> m_session;
    const int m_number;
    const std::shared_ptr<LocalPort> m_port;  ///< stays while a channel uses it
    const SRTSOCKET m_controlId;
    const SRTSOCKET m_mediaId;

    // Owned by the receive thread.
    FrameAssembler m_videoAssembler;
    FrameAssembler m_audioAssembler;
    int64_t m_arrivedPackets = 0;  ///< at the last hasDataArrived()

    mutable std::mutex m_mutex;  ///< guards the fields below
    /// One a reader: a frame must not wake those who wait for something else.
    std::condition_variable m_controlCame;
    std::condition_variable m_videoCame;
    std::condition_variable m_audioCame;
    std::shared_ptr<SealedSocket> m_controlSocket;
    std::shared_ptr<SealedSocket> m_mediaSocket;
    std::deque<Control> m_controls;
    FrameQueue m_video;
    FrameQueue m_audio;
    uint32_t m_droppedForReader = 0;
    int m_endReason = 0;
};

}  // namespace orvelle
