#include <QCoreApplication>

#include "support/suites.h"

int main(int argc, char** argv) {
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    QCoreApplication app(argc, argv);
    return orvelle::test::runSuites(argc, argv);
}
