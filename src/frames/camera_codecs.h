#pragma once

#include <cstdint>

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace orvelle {

/// The FFmpeg codec of a camera codec id; AV_CODEC_ID_NONE for an unknown one.
AVCodecID codecOfCameraId(int cameraId);

/// The first camera codec id of an FFmpeg codec; 0 when no id stands for it.
int cameraIdOfCodec(AVCodecID codec);

}  // namespace orvelle
