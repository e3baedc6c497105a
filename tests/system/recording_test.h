#pragma once

#include <QObject>

/// Recordings of the demo camera, opened again by another program.
class RecordingTest : public QObject {
    Q_OBJECT
private slots:
    void recording_opensWithItsFrames_whenMadeFromTheDemoCamera_data();
    void recording_opensWithItsFrames_whenMadeFromTheDemoCamera();
};
