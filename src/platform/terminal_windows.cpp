#include "platform/terminal.h"

#include <io.h>

namespace orvelle {

bool isTerminal(std::FILE* stream) {
    return _isatty(_fileno(stream)) != 0;
}

}  // namespace orvelle
