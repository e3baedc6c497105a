#pragma once

#include <chrono>
#include <cstdint>

namespace orvelle {

/// Milliseconds of the steady clock; only differences mean anything.
inline int64_t steadyMilliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace orvelle
