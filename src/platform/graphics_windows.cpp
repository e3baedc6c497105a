#include "platform/graphics.h"

#include <windows.h>

namespace orvelle {

bool mayHaveGraphicsCard() {
    // A remote desktop gives the generic OpenGL 1.1, or a card whose pictures have to be read back.
    return GetSystemMetrics(SM_REMOTESESSION) == 0;
}

}  // namespace orvelle
