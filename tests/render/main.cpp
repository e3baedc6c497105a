#include <QApplication>

#include "support/keep_libraries.h"
#include "support/suites.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    return orvelle::test::runSuites(argc, argv);
}
