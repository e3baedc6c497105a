#include <QApplication>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include "media/device_inputs.h"
#include "support/keep_libraries.h"
#include "support/suites.h"

/// The engine and the client against the real camera program.
int main(int argc, char** argv) {
    const QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    orvelle::registerDeviceInputs();
    return orvelle::test::runSuites(argc, argv);
}
