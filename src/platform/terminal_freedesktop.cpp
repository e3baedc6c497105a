#include "platform/terminal.h"

#include <unistd.h>

namespace orvelle {

bool isTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) == 1;
}

void writeToTerminalOfCaller() {}

}  // namespace orvelle
