#pragma once

#include <QString>
#include <QStringList>

#include <optional>

#include "camera/feed/feed.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace orvelle {

/// What the command line and the environment ask for.
struct CameraOptions {
    QString uid;
    QString name;
    QString passwordFile;      ///< empty: the password comes from elsewhere
    QString stateDirectory;    ///< empty: the usual one
    bool isCodeAsked = false;  ///< print the device code instead of being a camera
    QString source;            ///< empty: the demo scene
    bool isRepeated = true;
    int scene = 0;
    int cameras = 1;
    uint16_t port = 0;
    QString bindAddress;
    QString networkName;
    AVCodecID videoCodec = AV_CODEC_ID_H264;
    AVCodecID audioCodec = AV_CODEC_ID_AAC;
    FeedFormat format;
    bool hasSize = false;     ///< --size was given, not taken by default
    bool hasBitRate = false;  ///< --bitrate was given
    int deviceType = 0;
    std::optional<int> timezoneMinutes;  ///< none: as this machine's, with daylight saving
    QString cardDirectory;               ///< empty: no memory card
    int64_t cardBytes = 0;               ///< its quota
    QString madeCard;                    ///< fill a card instead of being a camera
    int madeCardDays = 5;
    QString clipFile;  ///< write a clip instead of being a camera
    int clipSeconds = 10;
};

struct ParsedOptions {
    CameraOptions options;
    QString error;  ///< one line; empty when the options can be used
    QString text;   ///< help or version, asked for instead
};

ParsedOptions parseOptions(const QStringList& arguments);

}  // namespace orvelle
