#include "media/player/sound_schedule.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr double kSmoothing = 1.0 / 64;
/// Until the device is filled and the smoothed figure means something.
constexpr int64_t kSettleUs = 5'000'000;

}  // namespace

SoundSchedule::Plan SoundSchedule::plan(int64_t dueUs, int64_t frameUs, int64_t nowUs) {
    // Ran empty, it begins anew with what is written now.
    if (m_endUs && *m_endUs < nowUs)
        restart();
    const bool isStart = !m_endUs;
    const int64_t earlyUs = dueUs - m_endUs.value_or(nowUs);
    if (earlyUs < (isStart ? -frameUs : -kToleranceUs))
        return {0, true};
    return {earlyUs > (isStart ? 0 : kToleranceUs) ? earlyUs : 0, false};
}

void SoundSchedule::wrote(int64_t us, int64_t fromUs, int64_t nowUs) {
    if (!m_endUs) {
        m_endUs = fromUs;
        m_startedUs = fromUs;
    }
    *m_endUs += us;
    follow(nowUs);
}

void SoundSchedule::follow(int64_t nowUs) {
    const auto heldUs = static_cast<double>(*m_endUs - nowUs);
    m_heldUs += (heldUs - m_heldUs) * kSmoothing;
    if (nowUs - m_startedUs < kSettleUs)
        return;
    if (!m_usuallyHeldUs)
        m_usuallyHeldUs = m_heldUs;
    const double driftUs = m_heldUs - *m_usuallyHeldUs;
    if (driftUs < kToleranceUs && driftUs > -kToleranceUs)
        return;
    *m_endUs -= static_cast<int64_t>(driftUs);
    m_heldUs -= driftUs;
}

void SoundSchedule::restart() {
    m_endUs.reset();
    m_usuallyHeldUs.reset();
    m_heldUs = 0.0;
}

}  // namespace orvelle
