#pragma once

#include <string>

namespace orvelle {

/// From now on a crash of this process leaves its last state in the file `path` (UTF-8), in place
/// of an earlier one: the stacks of all threads, none of the heap. Where the system has a handler
/// of crashes for all programs, that one stays.
void writeCrashDumpTo(const std::string& path);

}  // namespace orvelle
