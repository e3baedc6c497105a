#include "platform/replace_file.h"

#include <cstdio>

namespace orvelle {

bool replaceFile(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace orvelle
