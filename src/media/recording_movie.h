#pragma once

#include <cstdint>
#include <vector>

#include "media/recording_index.h"

namespace orvelle {

/// The movie box that makes an ordinary, seekable file of recorded fragments: `header`, the movie
/// box before them, with tables of all samples. Players begin at the first picture that can be
/// decoded; sound starts at the same moment. Tracks that then show nothing are left out. Empty
/// when no track is left or the header is no movie box.
std::vector<uint8_t> finishedMovie(const BoxReader& header,
                                   const std::vector<RecordedTrack>& tracks);

}  // namespace orvelle
