#pragma once

#include <string>

namespace orvelle {

/// UTF-8 as the wide calls of Windows take it; empty where the text is not UTF-8.
std::wstring wideText(const std::string& utf8);

/// The same for a path of a file, absolute, and in the form that may be longer than 260 characters
/// where it is; empty for none.
std::wstring widePath(const std::string& utf8);

/// Hands a file or folder to the shell; false when the shell refused it.
bool shellOpen(const std::wstring& path);

}  // namespace orvelle
