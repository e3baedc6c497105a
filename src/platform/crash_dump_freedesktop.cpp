#include "platform/crash_dump.h"

namespace orvelle {

void writeCrashDumpTo(const std::string&) {}

}  // namespace orvelle
