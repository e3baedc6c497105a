#pragma once

#include <string>

namespace orvelle {

/// UTF-8 as the wide calls of Windows take it; empty where the text is not UTF-8.
std::wstring wideText(const std::string& utf8);

/// Hands a file or folder to the shell; false when the shell refused it.
bool shellOpen(const std::wstring& path);

}  // namespace orvelle
