#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace orvelle {

/// What the pictures around one have to do with it.
enum class PictureRole {
    kLink,        ///< refers to earlier ones, and later ones may refer to it
    kFresh,       ///< refers to no other: what is broken before it does not matter to it
    kDisposable,  ///< no other refers to it
};

/// The role of the picture in an access unit in Annex B, read from the first unit that holds a part
/// of it. `isKey` is what its sender says; the start of a gradual refresh is marked as well, and
/// is no fresh picture. Codecs without such units have fresh pictures and links only.
PictureRole pictureRole(AVCodecID codec, const uint8_t* bytes, size_t size, bool isKey);

}  // namespace orvelle
