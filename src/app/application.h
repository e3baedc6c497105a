#pragma once

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QPointer>
#include <QTimer>

class MainWindow;

/// The application object: the Qt application, the way for others to end or restart it, and
/// on Windows the filter for the system's session-end and suspend messages.
/// Interface thread only.
class KvApplication : public QApplication, public QAbstractNativeEventFilter {
    Q_OBJECT
public:
    KvApplication(int& argc, char** argv);
    ~KvApplication() override;

    /// The one application object, or null before and after its life.
    static KvApplication* instance();

    /// The window of the current pass; not owned.
    void setMainWindow(MainWindow* window);

    /// Ends the event loop with -1: the main window is built anew, the cameras stay connected.
    static void restart();

    bool nativeEventFilter(const QByteArray& eventType, void* message, long* result) override;

private:
    QPointer<MainWindow> m_mainWindow;
    QTimer m_heapTimer;
};
