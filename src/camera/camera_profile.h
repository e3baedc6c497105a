#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace orvelle {

/// Minutes by which a camera's clock is east of UTC now: the fixed ones, else this machine's, which
/// change with daylight saving.
int minutesEastOfUtc(const std::optional<int>& fixed);
/// A moment (since 1970, UTC) as time since midnight on that clock, with the daylight saving of
/// the moment.
int64_t localDayUs(int64_t wallUs, const std::optional<int>& fixed);

/// What a camera tells of itself; fixed after construction.
struct CameraProfile {
    QString uid;                         ///< ASCII letters and digits
    QString name;                        ///< shown by LAN searches
    int deviceType = 0;                  ///< 1: turns
    std::optional<int> timezoneMinutes;  ///< east of UTC; none: this machine's
    int pictureHeight = 720;             ///< decides the quality that is reported
    QString networkName;                 ///< of the Wi-Fi; empty when there is none
    QString ipAddress;
    QString macAddress;
};

}  // namespace orvelle
