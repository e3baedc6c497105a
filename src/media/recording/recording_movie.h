#pragma once

#include <cstdint>
#include <vector>

#include "media/recording/box_reader.h"
#include "media/recording/recorded_samples.h"

namespace orvelle {

/// The movie box that makes an ordinary, seekable file of recorded fragments: `header`, the movie
/// box before them, with tables of all samples. A track that begins later than the recording does
/// stays later. Tracks that show nothing are left out. Empty when no track is left or the header is
/// no movie box.
std::vector<uint8_t> finishedMovie(const BoxReader& header,
                                   const std::vector<RecordedTrack>& tracks);

}  // namespace orvelle
