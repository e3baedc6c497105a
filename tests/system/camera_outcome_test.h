#pragma once

#include <QObject>

/// What a user can tell about a camera that does not connect.
class CameraOutcomeTest : public QObject {
    Q_OBJECT
private slots:
    void state_tellsWhy_whenCameraDoesNotConnect_data();
    void state_tellsWhy_whenCameraDoesNotConnect();
};
