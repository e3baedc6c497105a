#include "media_tests.h"
#include "support/leak_check.h"

#include "link/av.h"
#include "link/iotc.h"

#include <QApplication>
#include <QtTest>

int main(int argc, char** argv) {
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    QApplication application(argc, argv);
    const orvelle::test::LeakCheck leaks;
    int failures = IOTC_Initialize2(0) < 0 || avInitialize(32) < 0;
    for (const auto make :
         {makePacingTest, makeStreamRulesTest, makeTutkInputTest, makeDevicePlayerTest}) {
        failures += QTest::qExec(make().get(), argc, argv);
    }
    return failures + leaks.leftovers();
}
