#pragma once

#include <string>

namespace orvelle {

/// Gives the file `from` the name `to`, in one step where another file has it. Both are UTF-8 and
/// on one disk. False when that failed; then both are as they were.
bool replaceFile(const std::string& from, const std::string& to);

}  // namespace orvelle
