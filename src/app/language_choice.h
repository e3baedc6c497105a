#pragma once

#include <QString>

class QTranslator;

namespace orvelle {

/// The user's language or, where none was chosen, the system's: "chinese" or "english".
QString chooseLanguage();

/// Loads the chosen language's table, if there is one: texts show as their keys otherwise. The
/// toolkit's own menus and dialogs follow through `toolkit`, where their texts are installed.
void loadChosenLanguage(QTranslator& toolkit);

}  // namespace orvelle
