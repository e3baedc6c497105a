#pragma once

namespace orvelle {

/// Why the system refused a write to a file.
enum class WriteFault { kOther, kDiskFull, kQuota, kFileTooLarge };

/// Of the call that failed last on this thread; to be asked right after it.
WriteFault lastWriteFault();

/// A write beyond the size that a file may have fails from now on, instead of ending the process.
/// To be called once, before there are threads.
void letTooLargeWritesFail();

}  // namespace orvelle
