#pragma once

namespace orvelle {

/// The program from start to exit; returns its exit code, -1 when another copy is running.
int runOrvelle(int argc, char** argv);

}  // namespace orvelle
