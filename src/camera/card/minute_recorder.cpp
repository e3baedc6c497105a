#include "camera/card/minute_recorder.h"

#include <cstdlib>
#include <utility>

#include "camera/card/recording_name.h"

namespace orvelle {

namespace {

constexpr int64_t kSecondUs = 1'000'000;
constexpr int64_t kMinuteUs = kRecordingSec * kSecondUs;
constexpr int64_t kLongestGroupSec = 10;  ///< by which a minute may begin late and still follow
constexpr int64_t kClockStepUs = 2 * kSecondUs;
constexpr int64_t kSoundWaitUs = kSecondUs;
constexpr int64_t kSoundBitsPerSecond = 64'000;

}  // namespace

MinuteRecorder::MinuteRecorder(CardStore* store, const FeedFormat& format)
    : m_store(store), m_format(format) {}

void MinuteRecorder::take(const EncodedFrame& frame, int64_t wallOffsetUs) {
    if (frame.medium == Medium::kAudio) {
        if (const auto sound = RecordedSound::of(frame))
            m_sound = sound;
    } else if (isStartDue(frame, wallOffsetUs)) {
        if (frame.isKey)
            begin(frame, wallOffsetUs);
        else if (m_isRunning && !std::exchange(m_hasRequestedKey, true))
            m_isKeyRequested = true;
    }
    if (!m_held.empty() || (m_isRunning && !m_writer.isOpen()))
        hold(frame);
    else if (m_writer.isOpen())
        write(frame);
}

bool MinuteRecorder::takeKeyRequest() {
    return std::exchange(m_isKeyRequested, false);
}

bool MinuteRecorder::isStartDue(const EncodedFrame& frame, int64_t wallOffsetUs) const {
    return !m_isRunning || frame.timeUs + m_offsetUs >= m_startSec * kSecondUs + kMinuteUs ||
           frame.codecId != m_codecId || std::llabs(wallOffsetUs - m_offsetUs) > kClockStepUs;
}

void MinuteRecorder::begin(const EncodedFrame& key, int64_t wallOffsetUs) {
    const int64_t nextSec = m_startSec + kRecordingSec;
    const int64_t nowSec = (key.timeUs + wallOffsetUs) / kSecondUs;
    const bool follows = m_isRunning && key.codecId == m_codecId && nowSec >= nextSec &&
                         nowSec <= nextSec + kLongestGroupSec;
    close();
    m_isRunning = true;
    m_hasRequestedKey = false;
    m_startSec = follows ? nextSec : nowSec;
    m_offsetUs = wallOffsetUs;
    m_codecId = key.codecId;
}

// A file must name its sound in its header: the first one waits a moment for it to come.
void MinuteRecorder::hold(const EncodedFrame& frame) {
    m_held.push_back(frame);
    const int64_t heldUs = frame.timeUs - m_held.front().timeUs;
    if (m_isSoundAwaited && !m_sound && heldUs < kSoundWaitUs)
        return;
    m_isSoundAwaited = false;
    openFile();
    const std::vector<EncodedFrame> held = std::exchange(m_held, {});
    for (const EncodedFrame& one : held)
        write(one);
}

void MinuteRecorder::openFile() {
    if (!m_store->makeRoom(minuteBytes())) {
        m_isRunning = false;
        return;
    }
    const QString error =
        m_writer.open(m_store->unfinishedPath(m_startSec), m_format, m_held.front(), m_sound);
    if (!error.isEmpty())
        fail(error);
    else
        m_store->begin(m_startSec);
}

void MinuteRecorder::write(const EncodedFrame& frame) {
    if (!m_writer.isOpen())
        return;
    const int64_t sinceStartUs = frame.timeUs + m_offsetUs - m_startSec * kSecondUs;
    if (!m_writer.write(frame, sinceStartUs / 1000))
        fail(m_writer.error());
}

void MinuteRecorder::fail(const QString& reason) {
    drop();
    m_store->fail(m_startSec, QStringLiteral("cannot be written (%1)").arg(reason));
}

void MinuteRecorder::close() {
    const bool wasOpen = m_writer.isOpen();
    m_isRunning = false;
    m_held.clear();
    if (!wasOpen)
        return;
    if (!m_writer.close())
        m_store->fail(m_startSec, QStringLiteral("cannot be written (%1)").arg(m_writer.error()));
    else
        m_store->finish(m_startSec);
}

void MinuteRecorder::drop() {
    m_writer.close();
    m_store->forget(m_startSec);
    m_held.clear();
    m_isRunning = false;
}

int64_t MinuteRecorder::minuteBytes() const {
    return (m_format.bitsPerSecond + kSoundBitsPerSecond) / 8 * kRecordingSec * 5 / 4;
}

}  // namespace orvelle
