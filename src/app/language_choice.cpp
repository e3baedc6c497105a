#include "app/language_choice.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include "core/configure.h"
#include "core/language.h"
#include "core/shipped_files.h"

namespace orvelle {

QString chooseLanguage() {
    const QString chosen = KvConfigure().getString(settings::kLanguage, QString());
    if (!chosen.isEmpty())
        return chosen;
    return QLocale().language() == QLocale::Chinese ? QStringLiteral("chinese")
                                                    : QStringLiteral("english");
}

void loadChosenLanguage(QTranslator& toolkit) {
    KvLanguage::setRoot(languageFolder());
    const QString language = chooseLanguage();
    KvLanguage::load(language);
    QCoreApplication::removeTranslator(&toolkit);
    if (language == QLatin1String("chinese") &&
        toolkit.load(QStringLiteral("qt_zh_CN"),
                     QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&toolkit);
}

}  // namespace orvelle
