#pragma once

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QTimer>
#include <QWidget>

/// Tells single, double and right clicks on a widget apart, as an event filter that lets every
/// event pass. A single click is reported 200 ms after its release. Interface thread.
class KvClicker : public QObject {
    Q_OBJECT

public:
    explicit KvClicker(QObject* parent = nullptr);
    explicit KvClicker(QWidget* target, QObject* parent = nullptr);

    /// Borrowed; null for none. What was pending on the former target is forgotten.
    void setTarget(QWidget* target);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void click();
    void doubleClick();
    /// Where it was released, in the target's pixels.
    void rightClick(int x, int y);

private:
    void onRelease(Qt::MouseButton button);
    void forget();
    void _invokeClickTimer();

    QPointer<QWidget> m_target;
    bool m_pressed = false;
    QTimer m_clickTimer;
    int m_releases = 0;
    QPointF m_releasePosition;
};
