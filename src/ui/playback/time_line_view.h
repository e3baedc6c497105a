#pragma once

#include <QTimer>
#include <QWidget>

#include <optional>

#include "ui/playback/time_line_rules.h"

/// A band of time with the recordings on it, dragged under a fixed line in its middle; a click
/// brings the moment under the mouse there. The arrow
/// keys step by a tick, with Ctrl or Shift by a major one; Home and End go to the first and last
/// mark. Shift and the mouse mark a span of time. Setters repaint and emit nothing. Interface
/// thread.
class KvTimeLineView : public QWidget {
    Q_OBJECT

public:
    explicit KvTimeLineView(QWidget* parent = nullptr);

    /// Seconds since 1970 UTC; below 1 is no limit. The value follows a changed limit.
    void setMinimum(int minimum);
    void setMaximum(int maximum);
    int minimum() const { return m_minimum; }
    int maximum() const { return m_maximum; }

    /// The moment under the middle line, seconds since 1970 UTC; kept within the limits.
    void setValue(int value);
    int value() const { return m_scale.value; }

    /// The three make up the scale; each is at least 1.
    void setPixelsPerStep(int pixels);
    void setStepsPerMajor(int steps);
    void setSecondsPerStep(int seconds);
    int pixelsPerStep() const { return m_scale.pixelsPerStep; }
    int stepsPerMajor() const { return m_stepsPerMajor; }
    int secondsPerStep() const { return m_scale.secondsPerStep; }
    /// Changes the scale and leaves the moment at `x` where it is, as far as the limits allow.
    void zoomAt(int x, int secondsPerStep);

    /// Copied and sorted.
    void setMarks(const QVector<KvTimeLineMark>& marks);
    const QVector<KvTimeLineMark>& marks() const { return m_marks; }
    const orvelle::TimeSpans& spans() const { return m_spans; }

    /// In order: where it is not known whether something was recorded.
    void setUnknown(const orvelle::TimeSpans& spans);
    const orvelle::TimeSpans& unknown() const { return m_unknown; }
    /// What can be seen, within the limits.
    orvelle::TimeSpan shownSpan() const;

    /// What the user has marked; empty without.
    const std::optional<orvelle::TimeSpan>& markedSpan() const { return m_marked; }
    void setMarkedSpan(const std::optional<orvelle::TimeSpan>& span);

    /// Whether the user moves it, or has zoomed just now: what plays must not move it then.
    bool isDragging() const { return m_dragging || m_heldKey != 0 || m_zoomHold.isActive(); }

    /// Forgets a held key, whose release will not come here.
    void cancelKeys();

    QSize sizeHint() const override;

signals:
    /// The user let go of it at this value.
    void valueChangeEnded(int value);
    /// The wheel was turned over `x`; `levels` below 0 come closer.
    void zoomRequested(int levels, int x);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void moveTo(qint64 value);
    void markUpTo(int x);
    void rebaseDrag();
    orvelle::TimeScale scale() const;

    void paintTicks(QPainter& painter, const std::vector<orvelle::TimeTick>& ticks) const;
    void paintUnknown(QPainter& painter) const;
    void paintMarks(QPainter& painter) const;
    void paintLabels(QPainter& painter, const std::vector<orvelle::TimeTick>& ticks) const;
    void paintMarked(QPainter& painter) const;
    void paintHandle(QPainter& painter) const;
    void paintMoment(QPainter& painter) const;

    orvelle::TimeScale m_scale;  ///< but for its width
    int m_stepsPerMajor = 5;
    int m_minimum = 0;
    int m_maximum = 0;
    QVector<KvTimeLineMark> m_marks;  ///< sorted
    orvelle::TimeSpans m_spans;       ///< of the marks
    orvelle::TimeSpans m_unknown;
    std::optional<orvelle::TimeSpan> m_marked;
    bool m_isMarking = false;
    int m_markedFrom = 0;  ///< where marking began
    bool m_dragging = false;
    int m_heldKey = 0;       ///< the key that moves it, 0 for none
    bool m_isClick = false;  ///< the drag has gone nowhere so far
    int m_valueAtPress = 0;
    int m_xAtPress = 0;
    int m_mouseX = -1;  ///< -1 while the mouse is elsewhere
    int m_wheel = 0;    ///< what is left below one notch, in eighths of a degree
    QTimer m_zoomHold;
};
