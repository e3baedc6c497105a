#pragma once

#include <array>
#include <cstddef>
#include <map>

namespace orvelle::bench {

/// What the threads of this process do, by their names.
enum class Work {
    kLink,       ///< receiving: link-client, SRT's own, recv-*, device-*
    kDecoding,   ///< decode-*
    kCopying,    ///< show-video: each picture out of the decoder's buffers, or into RGB
    kDrawing,    ///< llvmpipe-*: the software OpenGL's threads
    kInterface,  ///< the interface thread: pictures into textures or the window, widgets
    kRecording,  ///< recorder
    kOther,
    kCount,
};

/// CPU used by the living threads of this process, as the kernel counts it in steps of 10 ms.
struct ThreadUsage {
    struct Thread {
        Work work = Work::kOther;
        double cpuSeconds = 0.0;
    };
    double wallSeconds = 0.0;  ///< monotonic clock
    std::map<int, Thread> threads;

    static ThreadUsage now();
};

/// CPU between two readings by Work, in percent of one core. Threads that ended in between are
/// missing.
using CpuSplit = std::array<double, static_cast<size_t>(Work::kCount)>;
CpuSplit cpuSplit(const ThreadUsage& from, const ThreadUsage& to);

/// "link", "decoding", ...
const char* workName(Work work);

}  // namespace orvelle::bench
