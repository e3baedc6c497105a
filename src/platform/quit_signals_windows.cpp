#include "platform/quit_signals.h"

namespace orvelle {

HeldQuitSignals::HeldQuitSignals() = default;

HeldQuitSignals::~HeldQuitSignals() = default;

struct QuitSignals::Pipe {};

QuitSignals::QuitSignals(std::function<void()>) {}

QuitSignals::~QuitSignals() = default;

}  // namespace orvelle
