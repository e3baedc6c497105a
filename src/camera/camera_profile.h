#pragma once

#include <QString>

#include <cstdint>

namespace orvelle {

/// What a camera tells of itself; fixed after construction.
struct CameraProfile {
    QString uid;              ///< ASCII letters and digits
    QString name;             ///< shown by LAN searches
    int deviceType = 0;       ///< 1: turns
    int timezoneMinutes = 0;  ///< east of UTC
    int pictureHeight = 720;  ///< decides the quality that is reported
    QString networkName;      ///< of the Wi-Fi; empty when there is none
    QString ipAddress;
    QString macAddress;
};

}  // namespace orvelle
