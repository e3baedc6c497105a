#include "platform/graphics.h"

#include <cstdlib>
#include <filesystem>
#include <string>

namespace orvelle {
namespace {

namespace fs = std::filesystem;

/// Of the kernel's drivers and, for those that do not use its common interface, their own.
constexpr const char* kDevices[] = {"/dev/nvidiactl",  "/dev/dxg",           "/dev/mali0",
                                    "/dev/kgsl-3d0",   "/dev/pvr_sync",      "/dev/galcore",
                                    "/dev/nvhost-gpu", "/dev/nvidia-modeset"};

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

bool isSwitchedOff() {
    const std::string software = environment("LIBGL_ALWAYS_SOFTWARE");
    return software == "1" || software == "true" || software == "y" || software == "yes";
}

/// "HOST:0": everything that is drawn goes through the network.
bool isScreenRemote() {
    const std::string display = environment("DISPLAY");
    return !display.empty() && environment("WAYLAND_DISPLAY").empty() && display[0] != ':' &&
           display[0] != '/' && display.rfind("unix:", 0) != 0;
}

}  // namespace

bool mayHaveGraphicsCard() {
    if (isSwitchedOff() || isScreenRemote())
        return false;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/dev/dri", error)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("card", 0) == 0 || name.rfind("render", 0) == 0)
            return true;
    }
    for (const char* device : kDevices) {
        if (fs::exists(device, error))
            return true;
    }
    return false;
}

}  // namespace orvelle
