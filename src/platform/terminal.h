#pragma once

#include <cstdio>

namespace orvelle {

/// Whether what is written to the stream is read by a person at a terminal.
bool isTerminal(std::FILE* stream);

}  // namespace orvelle
