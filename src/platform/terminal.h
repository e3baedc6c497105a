#pragma once

#include <cstdio>

namespace orvelle {

/// Whether what is written to the stream is read by a person at a terminal.
bool isTerminal(std::FILE* stream);

/// Standard output of a program that has windows and no console goes to the terminal that it was
/// started from, if there is one and nothing else was given to it. On other systems it does anyway.
void writeToTerminalOfCaller();

}  // namespace orvelle
