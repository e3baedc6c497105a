#pragma once

#include <QDate>
#include <QWidget>

#include <array>

#include "ui/playback/time_line_rules.h"

class KvCalendarDayView;
class KvClickLabel;
class QLabel;
class QPushButton;

/// A month, with a dot on the days on which something was recorded. Months after the current one
/// are not reached. The arrow keys go from day to day, also into the neighbouring months; Page Up
/// and Page Down from month to month; Space and Enter choose. Enter on the selected day is left to
/// the dialog. Interface thread.
class KvCalendarView : public QWidget {
    Q_OBJECT

public:
    static constexpr int kCells = 42;

    explicit KvCalendarView(QWidget* parent = nullptr);

    /// Shows the month of `date`, or the current one for an invalid date. Emits nothing.
    void setDate(const QDate& date);
    /// The selected date, invalid for none.
    const QDate& date() const { return m_date; }
    /// The first of the month that is shown.
    const QDate& month() const { return m_month; }
    void setMarks(const QVector<KvTimeLineMark>& marks);
    /// The first of each month that holds any recording, in order; empty when nobody knows. The
    /// title offers them.
    void setMonths(const QVector<QDate>& months);

signals:
    /// The user chose this day.
    void clickCalendar(QDate date);
    /// The user went to the month that begins with this day.
    void monthChanged(QDate firstOfMonth);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    virtual QDate today() const { return QDate::currentDate(); }

private slots:
    void _onClickPrevButton(bool);
    void _onClickNextButton(bool);
    void _onClickCalendarDayView();

private:
    void buildHead();
    void buildDays();
    void choose(const QDate& date);
    bool goToMonth(int months);
    void offerMonths();
    void goToDay(const QDate& date);
    QDate dayAfterKey(int key) const;
    QDate focusedDay() const;
    void fill();
    void markDays();
    void letTabReach(KvCalendarDayView* cell);
    KvCalendarDayView* cellOf(const QDate& date) const;

    QPushButton* m_prev;  ///< children, as all below; in this order they take the focus
    QPushButton* m_prevYear;
    KvClickLabel* m_title;
    QPushButton* m_next;
    QPushButton* m_nextYear;
    std::array<QLabel*, 7> m_weekdays{};
    std::array<KvCalendarDayView*, kCells> m_cells{};
    QDate m_month;  ///< the first of it
    QDate m_date;
    orvelle::TimeSpans m_spans;
    QVector<QDate> m_months;
};
