#pragma once

#if __has_include(<dlfcn.h>)
#include <dlfcn.h>

// Graphics drivers leak a little and are unloaded at the end, when the leak checker can no longer
// put their names to it. For the main file of a test program that draws: nothing is unloaded.
extern "C" int dlclose(void*) noexcept {
    return 0;
}
#endif
