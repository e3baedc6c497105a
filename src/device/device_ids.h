#pragma once

#include <limits>

namespace orvelle {

/// The id that follows the highest one given out; starts over where the settings hold nonsense.
constexpr int idAfter(int highest) {
    return highest < 0 || highest == std::numeric_limits<int>::max() ? 1 : highest + 1;
}

}  // namespace orvelle
