#include "media/card/playback_time.h"

#include <algorithm>

namespace orvelle {

QDateTime recordingTime(const QDateTime& start, int32_t baseMinute) {
    // No zone is further off; what a broken camera tells must not overflow.
    constexpr int32_t kMaxMinutes = 14 * 60;
    const int seconds = 60 * std::clamp(baseMinute, -kMaxMinutes, kMaxMinutes);
    return start.toOffsetFromUtc(seconds).addSecs(-seconds);
}

}  // namespace orvelle
