#pragma once

#include <QDate>
#include <QWidget>

/// A day of the calendar: its number, and a dot where something was recorded. A disabled one is
/// grey and cannot be clicked. Interface thread.
class KvCalendarDayView : public QWidget {
    Q_OBJECT

public:
    enum State { kNormal = 0, kSelected = 1, kToday = 2 };

    explicit KvCalendarDayView(QWidget* parent = nullptr);

    void setDate(const QDate& date);
    const QDate& date() const { return m_date; }
    void setState(int state);
    int state() const { return m_state; }
    void setHasRecordings(bool has);
    /// A day that has not come yet.
    void setToCome(bool isToCome);

signals:
    void click();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void paintShape(QPainter& painter) const;
    void paintNumber(QPainter& painter) const;
    QRectF shape() const;

    QDate m_date;
    int m_state = kNormal;
    bool m_hasRecordings = false;
    bool m_isToCome = false;
};
