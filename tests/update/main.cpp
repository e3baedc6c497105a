#include <QCoreApplication>
#include <QTemporaryDir>

#include "support/suites.h"

int main(int argc, char** argv) {
    const QTemporaryDir home;
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.path()));
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("update_test"));
    return orvelle::test::runSuites(argc, argv);
}
