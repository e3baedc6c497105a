#pragma once

namespace orvelle::test {

inline constexpr int kChildPicturesPerSec = 15;
inline constexpr int kChildSeconds = 20;

/// A program that does nothing but record, to be killed or to run into a full disk: "--record
/// PATH [BYTES]" writes PATH, where no file may grow beyond BYTES. It prints "failed" and "ended"
/// when the recorder tells it, and "waiting" once it has recorded 20 s, with nothing closed.
/// Pictures carry their number in the picture clock.
int runRecordingChild(int argc, char** argv);

}  // namespace orvelle::test
