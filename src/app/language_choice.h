#pragma once

#include <QString>

namespace orvelle {

/// The user's language or, where none was chosen, the system's: "chinese" or "english".
QString chooseLanguage();

/// Loads the chosen language's table, if there is one: texts show as their keys otherwise.
void loadChosenLanguage();

}  // namespace orvelle
