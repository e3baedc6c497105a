#include "media/card/playback_exchange.h"

#include "device/device_messages.h"
#include "device/tutk_request.h"
#include "media/media_log.h"

#include <QDebug>

#include <algorithm>
#include <chrono>

namespace orvelle {

namespace {

/// The result of a start that the camera has no recording for.
constexpr int32_t kNoRecording = -2;

}  // namespace

void PlaybackExchange::restart(uint32_t answerType, std::optional<int32_t> baseMinute) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_answerType = answerType;
    m_request = Request::kNone;
    m_isAnswered = false;
    m_hasStopped = false;
    m_channel = -1;
    m_isMissing = false;
    m_baseMinute = baseMinute;
    m_isAbandoned = false;
    m_hasEnded = false;
}

void PlaybackExchange::expect(Request request) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_request = request;
    m_isAnswered = request == Request::kStop && m_hasStopped;
}

bool PlaybackExchange::wait(int timeoutMs) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_answered.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                        [this] { return m_isAnswered || m_isAbandoned; });
    return m_isAnswered && !m_isAbandoned;
}

void PlaybackExchange::abandon() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isAbandoned = true;
    m_answered.notify_all();
}

int PlaybackExchange::channel() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_channel;
}

bool PlaybackExchange::isMissing() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isMissing;
}

std::optional<int32_t> PlaybackExchange::baseMinute() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_baseMinute;
}

bool PlaybackExchange::isAnswer(uint32_t type) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return type == m_answerType;
}

PlaybackExchange::News PlaybackExchange::accept(const KvTUTKResponse& response) {
    if (response.type() == IOTYPE_USER_IPCAM_GET_TIMEZONE_RESP) {
        const auto reply = TimeZoneReply::decode(response.data());
        if (!reply.timeBase)
            qCWarning(lcMedia, "time zone reply of %d bytes taken as UTC", response.data().size());
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_request == Request::kTimeBase && !m_isAnswered) {
            m_baseMinute = reply.timeBase.value_or(0);
            noteAnswer();
        }
        return News::kNone;
    }
    if (!isAnswer(response.type()))
        return News::kNone;
    const auto reply = SMsgAVIoctrlPlayRecordResp::decode(response.data());
    if (!reply.command) {
        qCWarning(lcMedia, "playback reply of %d bytes ignored", response.data().size());
        return News::kNone;
    }
    const int32_t result = reply.result.value_or(-1);
    qDebug("SMsgAVIoctrlPlayRecordResp command = 0x%X, result = %d", *reply.command, result);
    return acceptControl(*reply.command, result);
}

PlaybackExchange::News PlaybackExchange::acceptControl(uint32_t command, int32_t result) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    switch (command) {
        case SMsgAVIoctrlPlayRecord::kStart:
            if (m_request != Request::kStart || m_isAnswered)
                return News::kNone;
            m_channel = std::max(result, -1);
            m_isMissing = result == kNoRecording;
            noteAnswer();
            return m_channel < 0 ? News::kRefused : News::kNone;
        case SMsgAVIoctrlPlayRecord::kStop:
            if (m_request == Request::kStop)
                noteAnswer();
            if (m_channel < 0)
                return News::kNone;
            m_hasStopped = true;
            m_hasEnded = true;
            return News::kEnded;
        case SMsgAVIoctrlPlayRecord::kEnd:
            if (m_channel < 0)
                return News::kNone;
            m_hasEnded = true;
            return News::kEnded;
        default:
            return News::kNone;
    }
}

void PlaybackExchange::noteAnswer() {
    m_isAnswered = true;
    m_answered.notify_all();
}

}  // namespace orvelle
