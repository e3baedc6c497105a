#pragma once

#include <QObject>

/// A watched camera that goes away and comes back.
class RestartTest : public QObject {
    Q_OBJECT
private slots:
    void picture_returns_whenCameraIsKilledAndStarted();
};
