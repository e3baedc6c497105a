#include "media/playback_time.h"

#include <algorithm>

namespace orvelle {

QDateTime recordingTime(const QDateTime& start, int32_t baseMinute) {
    // No zone is further off; what a broken camera tells must not overflow.
    constexpr int32_t kMostMinutes = 14 * 60;
    const int seconds = 60 * std::clamp(baseMinute, -kMostMinutes, kMostMinutes);
    return start.toOffsetFromUtc(seconds).addSecs(-seconds);
}

}  // namespace orvelle
