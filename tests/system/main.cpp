#include <QApplication>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

#include "media/device_inputs.h"
#include "support/leak_check.h"
#include "system/camera_outcome_test.h"
#include "system/client_process_test.h"
#include "system/recording_test.h"
#include "system/restart_test.h"

/// The engine and the client against the real camera program.
int main(int argc, char** argv) {
    const QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    qputenv("ORVELLE_DISCOVERY_PORT", "47830");
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    const orvelle::test::LeakCheck leaks;
    orvelle::registerDeviceInputs();

    int failures = 0;
    CameraOutcomeTest cameraOutcome;
    RecordingTest recording;
    RestartTest restart;
    ClientProcessTest clientProcess;
    for (QObject* test : {static_cast<QObject*>(&cameraOutcome), static_cast<QObject*>(&recording),
                          static_cast<QObject*>(&restart), static_cast<QObject*>(&clientProcess)})
        failures += QTest::qExec(test, argc, argv);
    return failures + leaks.leftovers();
}
