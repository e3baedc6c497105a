#include <QCoreApplication>

#include "support/data_home.h"
#include "support/suites.h"

int main(int argc, char** argv) {
    const orvelle::test::DataHome home;
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("update_test"));
    return orvelle::test::runSuites(argc, argv);
}
