#include <QApplication>
#include <QLoggingCategory>
#include <QThreadPool>

#include "media/live/device_inputs.h"
#include "media/media_log.h"
#include "support/data_home.h"
#include "support/keep_libraries.h"
#include "support/suites.h"
#include "system/recording_child.h"

/// The engine and the client against the real camera program.
int main(int argc, char** argv) {
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    orvelle::silenceFfmpeg();
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    if (argc > 2 && qstrcmp(argv[1], "--record") == 0)
        return orvelle::test::runRecordingChild(argc, argv);
    const orvelle::test::DataHome home;
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    // Scaling pictures leaves threads that idle for half a minute otherwise.
    QThreadPool::globalInstance()->setExpiryTimeout(100);
    orvelle::registerDeviceInputs();
    return orvelle::test::runSuites(argc, argv);
}
