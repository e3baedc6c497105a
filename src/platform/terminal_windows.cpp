#include "platform/terminal.h"

#include <windows.h>

#include <io.h>

namespace orvelle {

bool isTerminal(std::FILE* stream) {
    return _isatty(_fileno(stream)) != 0;
}

void writeToTerminalOfCaller() {
    if (!GetStdHandle(STD_OUTPUT_HANDLE) && AttachConsole(ATTACH_PARENT_PROCESS))
        std::freopen("CONOUT$", "w", stdout);
}

}  // namespace orvelle
