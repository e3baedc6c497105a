#pragma once

#include "ui/dialogs/dialog.h"
#include "ui/playback/time_line_mark.h"

class KvCalendarView;
class QPushButton;

/// A calendar to choose a day of recordings from; OK gives 1. Interface thread.
class KvCalendarDialog : public KvDialog {
    Q_OBJECT

public:
    explicit KvCalendarDialog(QWidget* parent = nullptr);

    void setDate(const QDate& date);
    /// The selected date, invalid for none.
    QDate date() const;
    void setMarks(const QVector<KvTimeLineMark>& marks);
    /// See KvCalendarView.
    void setMonths(const QVector<QDate>& months);

    KvCalendarView* calendar() const { return m_calendar; }

signals:
    /// The user chose this day; the dialog stays.
    void clickDate(QDate date);
    /// The user went to the month that begins with this day.
    void monthChanged(QDate firstOfMonth);

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void _onClickCloseButton(bool);
    void _onClickOkButton(bool);
    void _onClickDate(QDate date);

private:
    KvCalendarView* m_calendar;  ///< children, as all below; in this order they take the focus
    QPushButton* m_today;
    QPushButton* m_ok;
    QPushButton* m_close;
};
