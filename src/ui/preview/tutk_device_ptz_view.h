#pragma once

#include <QWidget>

class KvDevice;
class KvTUTKDevice;

/// The round pad that turns a pan-tilt camera for as long as a part of it, or an arrow key, is
/// held. Whatever ends that (release, loss of focus, hiding, another device) stops the camera.
/// Interface thread.
class KvTUTKDevicePTZView : public QWidget {
    Q_OBJECT
public:
    explicit KvTUTKDevicePTZView(QWidget* parent = nullptr, KvDevice* device = nullptr);
    ~KvTUTKDevicePTZView() override;

    /// Borrowed; null for none. A camera that cannot be turned over the link changes nothing.
    void setDevice(KvDevice* device);
    /// Bits of orvelle::SMsgAVIoctrlPtzCmd::Direction; 0 while idle.
    int direction() const { return m_direction; }

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;

    /// Queues the command for a direction, 0 to stop; nothing without a device.
    virtual void sendPtz(int direction);

private:
    int zoneAt(const QPointF& position) const;
    void turn(int direction);
    void stopTurning();

    KvTUTKDevice* m_device = nullptr;
    int m_direction = 0;
};
