#include "platform/thread_name.h"

namespace orvelle {

void nameThisThread(const std::string&) {
    // QThread hands on its object's name.
}

}  // namespace orvelle
