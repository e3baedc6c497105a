#include "platform/quit_signals.h"

namespace orvelle {

struct QuitSignals::Pipe {};

QuitSignals::QuitSignals(std::function<void()>) {}

QuitSignals::~QuitSignals() = default;

}  // namespace orvelle
