#pragma once

#include <QString>

#include "core/language.h"

namespace orvelle {

/// The text of a key in the current language.
inline QString text(const char* key) {
    return KvLanguage::getString(QLatin1String(key));
}

/// The key itself. Marks keys that stand in a table or are returned, so that the test which looks
/// for missing texts finds them.
constexpr const char* textKey(const char* key) {
    return key;
}

}  // namespace orvelle
