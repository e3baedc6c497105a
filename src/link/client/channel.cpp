#include "link/client/channel.h"

#include "link/link_log.h"
#include "link/result_codes.h"

#include <chrono>
#include <cstring>
#include <utility>

namespace orvelle {

namespace {

// A reader that leaves this many unread has stopped reading.
constexpr size_t kMaxWaitingControls = 512;

// Channels above 0 carry recordings.
const FrameQueue::Bounds& boundsOf(int channel) {
    return channel == 0 ? FrameQueue::kLive : FrameQueue::kRecording;
}

}  // namespace

ClientChannel::ClientChannel(std::shared_ptr<ClientSession> session, int number,
                             std::shared_ptr<LocalPort> port, std::shared_ptr<SealedSocket> control,
                             std::shared_ptr<SealedSocket> media)
    : m_session(std::move(session)),
      m_number(number),
      m_port(std::move(port)),
      m_controlId(control ? control->id() : SRT_INVALID_SOCK),
      m_mediaId(media->id()),
      m_controlSocket(std::move(control)),
      m_mediaSocket(std::move(media)),
      m_video(FrameQueue::Kind::Video, boundsOf(number)),
      m_audio(FrameQueue::Kind::Audio, boundsOf(number)) {}

ClientChannel::Outcome ClientChannel::accept(const EncodedMessage& bytes) {
    const std::optional<Message> message = decodeMessage(bytes.bytes.data(), bytes.size);
    if (!message)
        return Outcome::Broken;
    if (const auto* fragment = std::get_if<FrameFragment>(&*message)) {
        acceptFragment(*fragment);
        return Outcome::Fine;
    }
    if (const auto* control = std::get_if<ControlMessage>(&*message)) {
        acceptControl(*control);
        return Outcome::Fine;
    }
    if (std::holds_alternative<ByeMessage>(*message))
        return Outcome::Goodbye;
    return std::holds_alternative<PongMessage>(*message) ? Outcome::Fine : Outcome::Broken;
}

void ClientChannel::acceptFragment(const FrameFragment& fragment) {
    FrameAssembler& assembler = fragment.isVideo ? m_videoAssembler : m_audioAssembler;
    const FrameAssembler::Result result = assembler.add(fragment);
    if (result == FrameAssembler::Result::Partial)
        return;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        FrameQueue& queue = fragment.isVideo ? m_video : m_audio;
        if (result == FrameAssembler::Result::Complete)
            queue.push(assembler.take());
        else
            queue.noteIncomplete();
    }
    (fragment.isVideo ? m_videoCame : m_audioCame).notify_all();
}

void ClientChannel::acceptControl(const ControlMessage& message) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_controls.size() >= kMaxWaitingControls) {
        qCWarning(lcLink, "session %d: control message 0x%x dropped, nobody reads",
                  m_session->sid(), message.type);
        return;
    }
    m_controls.push_back({message.type, {message.data, message.data + message.size}});
    lock.unlock();
    m_controlCame.notify_all();
}

bool ClientChannel::hasDataArrived() {
    const int64_t arrived = arrivedPackets(m_controlId) + arrivedPackets(m_mediaId);
    return arrived != std::exchange(m_arrivedPackets, arrived);
}

void ClientChannel::end(int reason) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_endReason == 0)
            m_endReason = reason;
    }
    wake();
}

int ClientChannel::endReason() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_endReason;
}

std::vector<std::shared_ptr<SealedSocket>> ClientChannel::sockets() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::shared_ptr<SealedSocket>> sockets;
    for (const auto& socket : {m_controlSocket, m_mediaSocket}) {
        if (socket)
            sockets.push_back(socket);
    }
    return sockets;
}

std::vector<std::shared_ptr<SealedSocket>> ClientChannel::takeSockets() {
    auto taken = sockets();
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_mediaSocket)
        return {};
    m_controlSocket.reset();
    m_mediaSocket.reset();
    return taken;
}

int ClientChannel::reasonLocked() const {
    return m_endReason == 0 && m_session->isAborted() ? int{IOTC_ER_INVALID_SID} : m_endReason;
}

int ClientChannel::sendControl(uint32_t type, const char* data, int size) {
    if (m_controlId == SRT_INVALID_SOCK || size < 0 || (size > 0 && !data))
        return AV_ER_INVALID_ARG;
    if (size > kMaxControlBytes)
        return AV_ER_EXCEED_MAX_SIZE;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (const int reason = reasonLocked())
        return reason;
    const ControlMessage message{type, reinterpret_cast<const uint8_t*>(data),
                                 static_cast<size_t>(size)};
    if (!m_controlSocket)
        return AV_ER_INVALID_ARG;
    switch (m_controlSocket->send(encodeMessage(message))) {
        case SendResult::Sent:
            return 0;
        case SendResult::Full:
            return IOTC_ER_TIMEOUT;
        case SendResult::Broken:
            break;
    }
    return AV_ER_REMOTE_TIMEOUT_DISCONNECT;
}

int ClientChannel::receiveControl(uint32_t* type, char* buffer, int maxSize, uint32_t timeoutMs,
                                  const AvStopCheck& stop) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const uint32_t interruptions = m_session->interruptions();
    m_controlCame.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] {
        return !m_controls.empty() || reasonLocked() != 0 || (stop && stop()) ||
               interruptions != m_session->interruptions();
    });
    if (m_session->isAborted())
        return reasonLocked();
    if (m_controls.empty())
        return m_endReason != 0 ? m_endReason : int{AV_ER_TIMEOUT};
    const Control control = std::move(m_controls.front());
    m_controls.pop_front();
    if (control.data.size() > static_cast<size_t>(maxSize))
        return AV_ER_EXCEED_MAX_SIZE;
    *type = control.type;
    std::copy(control.data.begin(), control.data.end(), buffer);
    return static_cast<int>(control.data.size());
}

int ClientChannel::take(FrameQueue& queue, LinkFrame* frame, uint32_t* number) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_session->isAborted())
        return reasonLocked();
    switch (queue.pop(frame, number)) {
        case FrameQueue::Next::Frame:
            return 0;
        case FrameQueue::Next::Gap:
            return AV_ER_LOSED_THIS_FRAME;
        case FrameQueue::Next::Incomplete:
            return AV_ER_INCOMPLETE_FRAME;
        case FrameQueue::Next::Nothing:
            break;
    }
    return m_endReason != 0 ? m_endReason : int{AV_ER_DATA_NOREADY};
}

int ClientChannel::takeVideo(LinkFrame* frame, uint32_t* number) {
    return take(m_video, frame, number);
}

int ClientChannel::takeAudio(LinkFrame* frame, uint32_t* number) {
    return take(m_audio, frame, number);
}

int ClientChannel::waitingAudio() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    const int reason = reasonLocked();
    return reason != 0 ? reason : m_audio.size();
}

void ClientChannel::waitVideo(int timeoutMs, const AvStopCheck& stop) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_videoCame.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] {
        return m_video.hasSomething() || reasonLocked() != 0 || (stop && stop());
    });
}

void ClientChannel::waitAudio(int moreThan, int timeoutMs, const AvStopCheck& stop) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_audioCame.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] {
        return m_audio.size() > moreThan || reasonLocked() != 0 || (stop && stop());
    });
}

void ClientChannel::discardMedia() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_video.discard();
    m_audio.discard();
}

void ClientChannel::noteVideoDropped() {
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_droppedForReader;
}

uint32_t ClientChannel::lostVideoFrames() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_video.lost() + m_droppedForReader;
}

void ClientChannel::wake() {
    // Taken and released so that a wait between its check and its sleep is not missed.
    m_mutex.lock();
    m_mutex.unlock();
    m_controlCame.notify_all();
    m_videoCame.notify_all();
    m_audioCame.notify_all();
}

}  // namespace orvelle
