#pragma once

/// Tells ThreadSanitizer of happens-before edges that Qt, which is not instrumented, makes
/// invisible. Without that sanitizer these cost nothing and order nothing: a call belongs only
/// where the surrounding primitive really synchronises.
#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
extern "C" {
void AnnotateIgnoreReadsBegin(const char* file, int line);
void AnnotateIgnoreReadsEnd(const char* file, int line);
void AnnotateIgnoreWritesBegin(const char* file, int line);
void AnnotateIgnoreWritesEnd(const char* file, int line);
}
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

/// While it lives, the sanitizer does not look at what this thread reads and writes: for a call
/// into Qt that touches nothing but Qt's own data, such as a queue of events.
class TsanBlindSpot {
public:
#if defined(__SANITIZE_THREAD__)
    TsanBlindSpot() {
        AnnotateIgnoreReadsBegin(__FILE__, __LINE__);
        AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
    }
    ~TsanBlindSpot() {
        AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
        AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
    }
#else
    TsanBlindSpot() {}
    ~TsanBlindSpot() {}
#endif
    TsanBlindSpot(const TsanBlindSpot&) = delete;
    TsanBlindSpot& operator=(const TsanBlindSpot&) = delete;
};

}  // namespace orvelle
