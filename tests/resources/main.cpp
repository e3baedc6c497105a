#include <QCoreApplication>

#include "support/suites.h"

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    Q_INIT_RESOURCE(orvelle);
    return orvelle::test::runSuites(argc, argv);
}
