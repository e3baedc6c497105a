#pragma once

/// Tells ThreadSanitizer of a happens-before edge that Qt, which is not instrumented, makes
/// invisible. Without that sanitizer both cost nothing and order nothing: a call belongs only
/// where the surrounding primitive really synchronises.
#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace orvelle {

inline void tsanRelease([[maybe_unused]] void* address) {
#if defined(__SANITIZE_THREAD__)
    __tsan_release(address);
#endif
}

inline void tsanAcquire([[maybe_unused]] void* address) {
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(address);
#endif
}

}  // namespace orvelle
