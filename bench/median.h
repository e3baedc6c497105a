#pragma once

#include <algorithm>
#include <vector>

namespace orvelle::bench {

/// The middle one of at least one value; of an even number the upper.
inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace orvelle::bench
