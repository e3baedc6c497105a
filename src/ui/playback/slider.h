#pragma once

#include <QSlider>

/// A horizontal slider that jumps to where it is clicked and follows the mouse from there.
/// Interface thread.
class KvSlider : public QSlider {
    Q_OBJECT

public:
    explicit KvSlider(QWidget* parent = nullptr);

    /// Whether the mouse holds it: nothing else should move it then.
    bool isPressed() const { return m_pressed; }
    /// 0 at the minimum to 1 at the maximum; 0 for an empty range.
    double ratio() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void jumpTo(double x);
    void setPressed(bool pressed);

    bool m_pressed = false;
};
