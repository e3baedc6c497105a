#include "platform/session_end_hold.h"

namespace orvelle {

struct SessionEndHold::Window {};

SessionEndHold::SessionEndHold(const std::string&) {}

SessionEndHold::~SessionEndHold() = default;

}  // namespace orvelle
