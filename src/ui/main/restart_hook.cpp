#include "ui/main/restart_hook.h"

namespace orvelle {

static std::function<void()> s_hook;

void setRestartHook(std::function<void()> hook) {
    s_hook = std::move(hook);
}

void requestRestart() {
    if (s_hook)
        s_hook();
}

}  // namespace orvelle
