#include "app/language_choice.h"

#include <QCoreApplication>
#include <QLocale>

#include "core/configure.h"
#include "core/language.h"

namespace orvelle {

QString chooseLanguage() {
    const QString chosen = KvConfigure().getString(QStringLiteral("language"), QString());
    if (!chosen.isEmpty())
        return chosen;
    return QLocale().language() == QLocale::Chinese ? QStringLiteral("chinese")
                                                    : QStringLiteral("english");
}

void loadChosenLanguage() {
    KvLanguage::setRoot(QCoreApplication::applicationDirPath() + QStringLiteral("/language"));
    KvLanguage::load(chooseLanguage());
}

}  // namespace orvelle
