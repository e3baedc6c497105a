#pragma once

#include <functional>

namespace orvelle {

/// How the main window asks to be built anew, which only the application can do. Interface thread.
void setRestartHook(std::function<void()> hook);
/// Without effect when there is no hook.
void requestRestart();

}  // namespace orvelle
