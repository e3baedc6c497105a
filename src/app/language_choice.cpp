#include "app/language_choice.h"

#include <QLocale>

#include "core/configure.h"
#include "core/language.h"
#include "core/shipped_files.h"

namespace orvelle {

QString chooseLanguage() {
    const QString chosen = KvConfigure().getString(QStringLiteral("language"), QString());
    if (!chosen.isEmpty())
        return chosen;
    return QLocale().language() == QLocale::Chinese ? QStringLiteral("chinese")
                                                    : QStringLiteral("english");
}

void loadChosenLanguage() {
    KvLanguage::setRoot(languageFolder());
    KvLanguage::load(chooseLanguage());
}

}  // namespace orvelle
