#pragma once

namespace orvelle {

/// Why the playback of a recording is over.
enum class PlaybackEnd {
    kNone,      ///< it is not, or nobody but the client ended it
    kFinished,  ///< the camera came to the end of the recording
    kRefused,   ///< the camera does not play it, or its channel cannot be opened
    kMissing,   ///< the camera has no recording of that moment, or cannot read it
    kLost,      ///< the camera or the way to it is gone
};

}  // namespace orvelle
