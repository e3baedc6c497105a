#include "frames/camera_codecs.h"

namespace orvelle {
namespace {

struct CameraCodec {
    int cameraId;
    AVCodecID codec;
};

constexpr CameraCodec kCameraCodecs[] = {
    {0x4C, AV_CODEC_ID_MPEG4},        {0x4D, AV_CODEC_ID_H263},       {0x4E, AV_CODEC_ID_H264},
    {0x4F, AV_CODEC_ID_MJPEG},        {0x50, AV_CODEC_ID_HEVC},       {0x87, AV_CODEC_ID_AAC},
    {0x88, AV_CODEC_ID_AAC},          {0x89, AV_CODEC_ID_PCM_ALAW},   {0x8A, AV_CODEC_ID_PCM_ALAW},
    {0x8B, AV_CODEC_ID_ADPCM_IMA_QT}, {0x8C, AV_CODEC_ID_PCM_S8},     {0x8D, AV_CODEC_ID_SPEEX},
    {0x8E, AV_CODEC_ID_MP3},          {0x8F, AV_CODEC_ID_ADPCM_G726},
};

}  // namespace

AVCodecID codecOfCameraId(int cameraId) {
    for (const CameraCodec& entry : kCameraCodecs) {
        if (entry.cameraId == cameraId)
            return entry.codec;
    }
    return AV_CODEC_ID_NONE;
}

int cameraIdOfCodec(AVCodecID codec) {
    for (const CameraCodec& entry : kCameraCodecs) {
        if (entry.codec == codec)
            return entry.cameraId;
    }
    return 0;
}

}  // namespace orvelle
