#pragma once

#include <QString>

namespace orvelle::bench {

/// CPU in percent of one core that FFmpeg alone takes to decode `streams` copies of a clip in
/// real time, one thread a stream, measured for `seconds`; negative when it cannot be read. It
/// counts those threads only: the rest of the process may work meanwhile.
double plainDecodingCpuPercent(const QString& clip, int streams, int seconds);

}  // namespace orvelle::bench
