#pragma once

#include <QMainWindow>
#include <QTimer>

class KvDevice;
class KvDevicePlayerView;
class QListWidget;

/// The one top-level window: the cameras by name and state, and the one that is watched.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Stops what plays and lets go of every camera; before cameras are cleared.
    void releaseDevices();

private slots:
    void _onSelectDevice(int row);
    void _invokeUpdateStates();

private:
    void buildChildren();
    void fillList();
    KvDevice* deviceAt(int row) const;

    QListWidget* m_cameraList = nullptr;  ///< a child, as the tile
    KvDevicePlayerView* m_tile = nullptr;
    QTimer m_stateTimer;
};
