#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace orvelle::test {

/// Ids and names of this process's threads, but for those that system libraries keep as long as
/// the process lives (X11, Mesa, D-Bus, glib, sound; on Windows all that have no name).
std::map<int, std::string> ownThreads();

/// The open sockets of this process, under names that tell them apart; those of system libraries
/// (of the Unix family) do not count.
std::set<std::string> openSockets();

/// CPU seconds that a process has used so far; 0 when there is none of that id.
double cpuSecondsOf(int64_t process);
/// Memory of it that is in RAM; 0 when there is none of that id.
double residentMibOf(int64_t process);

}  // namespace orvelle::test
