#pragma once

extern "C" {
#include <libavutil/rational.h>
}

namespace orvelle {

/// Of all times in this room, whatever the library at hand counts in.
constexpr AVRational kMicroseconds = {1, 1'000'000};

}  // namespace orvelle
