#pragma once

#include <QWidget>

#include "ui/playback/time_line_rules.h"

class KvPushButton;
class KvTimeLineView;
class QPushButton;

/// The bar under a recording: play, previous, next, the timeline, and its zoom. The zoom level
/// stays in the settings; the wheel zooms at the cursor, the keys + and - at the middle. The
/// timeline has its focus. Interface thread.
class KvVideoTimeLineView : public QWidget {
    Q_OBJECT

public:
    explicit KvVideoTimeLineView(QWidget* parent = nullptr);

    /// These are the timeline's.
    void setMinimum(int minimum);
    void setMaximum(int maximum);
    void setValue(int value);
    int minimum() const;
    int maximum() const;
    int value() const;
    void setMarks(const QVector<KvTimeLineMark>& marks);
    const QVector<KvTimeLineMark>& marks() const;
    void setUnknown(const orvelle::TimeSpans& spans);
    orvelle::TimeSpan shownSpan() const;
    bool isDragging() const;

    /// 0, a major tick a minute, to 4, one a day; out of range counts as the nearest. Stored.
    void setLevel(int level);
    int level() const;

    /// Whether the button stands for something that plays; emits nothing.
    void setPlayChecked(bool checked);
    bool isPlayChecked() const;

    KvTimeLineView* timeLine() const { return m_timeLine; }
    QSize sizeHint() const override;

signals:
    /// The user chose a moment: in a recording, or, where none follows, where he dropped it.
    void selectedTime(int time);
    /// The button's new state.
    void clickPlay(bool checked);
    void clickPrev();
    void clickNext();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private slots:
    void _onClickPlayButton(bool);
    void _onClickPrevButton(bool);
    void _onClickNextButton(bool);
    void _onClickIncreaseButton(bool);
    void _onClickReduceButton(bool);
    void _onTimeLineViewValueChangeEnded(int value);

private:
    void connectChildren();
    void zoomTo(int level, int x);
    void zoom(int levels, int x);

    KvPushButton* m_play;  ///< children, as all below; in this order they take the focus
    QPushButton* m_prev;
    QPushButton* m_next;
    KvTimeLineView* m_timeLine;
    QPushButton* m_increase;
    QPushButton* m_reduce;
};
