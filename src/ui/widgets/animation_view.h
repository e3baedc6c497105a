#pragma once

#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <memory>

/// Turns a picture by a step at every interval. Interface thread.
class KvAnimationView : public QWidget {
    Q_OBJECT

public:
    explicit KvAnimationView(QWidget* parent = nullptr);

    /// A null picture draws nothing.
    void setPixmap(const QPixmap& pixmap);
    /// Degrees.
    void setStep(double step) { m_step = step; }
    /// Milliseconds; holds from the next start().
    void setInterval(int interval) { m_interval = interval; }
    double angle() const { return m_angle; }

    void start();
    /// Back to the upright picture.
    void stop();

protected:
    void paintEvent(QPaintEvent* event) override;

private slots:
    void _doAnimation();

private:
    QPixmap m_pixmap;
    double m_angle = 0.0;
    double m_step = 36.0;
    int m_interval = 100;
    std::unique_ptr<QTimer> m_timer;  ///< only while it turns
};
