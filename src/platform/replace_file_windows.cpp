#include "platform/replace_file.h"

#include "platform/windows_text.h"

#include <windows.h>

namespace orvelle {

bool replaceFile(const std::string& from, const std::string& to) {
    return MoveFileExW(widePath(from).c_str(), widePath(to).c_str(), MOVEFILE_REPLACE_EXISTING) !=
           0;
}

}  // namespace orvelle
