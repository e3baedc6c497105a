#include <QCoreApplication>

#include "support/suites.h"

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    return orvelle::test::runSuites(argc, argv);
}
