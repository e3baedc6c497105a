#include "camera/camera_profile.h"

#include <QDateTime>

namespace orvelle {

int minutesEastOfUtc(const std::optional<int>& fixed) {
    return fixed ? *fixed : QDateTime::currentDateTime().offsetFromUtc() / 60;
}

int64_t localDayUs(int64_t wallUs, const std::optional<int>& fixed) {
    constexpr int64_t kDayUs = int64_t{86'400} * 1'000'000;
    const int64_t eastSec = fixed
                                ? int64_t{*fixed} * 60
                                : QDateTime::fromSecsSinceEpoch(wallUs / 1'000'000).offsetFromUtc();
    return (wallUs + eastSec * 1'000'000 + kDayUs) % kDayUs;
}

}  // namespace orvelle
