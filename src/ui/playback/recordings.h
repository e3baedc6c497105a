#pragma once

#include <QDate>
#include <QVector>

#include "ui/playback/time_line_mark.h"

namespace orvelle {

struct SMsgAVIoctrlListEventResp_VBK;

/// The recordings of one minute that an event list tells, up to a bound that no honest camera
/// reaches. Runs of absurd times are left out.
QVector<KvTimeLineMark> recordingsOf(const SMsgAVIoctrlListEventResp_VBK& list);

/// What is known of the recordings on one camera's card: which months were asked for, what the
/// answers told, and which recording plays. One thread.
///
/// A request covers a month and the one before. Answers carry no month, but come in the order of
/// the requests; an answer that nobody waits for changes nothing.
class Recordings {
public:
    static constexpr int kMaxMarks = 100000;

    /// For another camera.
    void clear() { *this = Recordings(); }

    /// Whether this month has to be asked for: false when it is the one last asked for.
    bool ask(const QDate& month);
    /// The first of the month last asked for, or invalid.
    const QDate& lastAsked() const { return m_lastAsked; }
    bool isAsking() const { return !m_asked.isEmpty(); }
    /// Every month may be asked for again.
    void forgetMonths() { m_lastAsked = QDate(); }
    /// No answer will come to what was asked for.
    void giveUp();
    /// Replaces what was known of the two months of the oldest request; false without one.
    bool answer(const QVector<KvTimeLineMark>& list);

    /// In order, each start once.
    const QVector<KvTimeLineMark>& all() const { return m_all; }
    bool isEmpty() const { return m_all.isEmpty(); }
    /// Seconds since 1970. -1 when nothing was recorded then.
    int indexAt(qint64 time) const;
    /// The first one of a local day, or -1.
    int indexOn(const QDate& day) const;

    /// The day to be played as soon as its month is known; invalid for none.
    void awaitDay(const QDate& day) { m_awaitedDay = day; }
    /// Whether an answer that is still to come may tell more of this day.
    bool mayCome(const QDate& day) const;
    struct Start {
        int index = -1;
        bool isMissing = false;  ///< the awaited day turned out to be empty
    };
    /// What is to be played by itself now, after an answer: the awaited day, else the newest
    /// recording, once. -1 for nothing.
    Start takeStart();

    /// The recording that plays or played last, or -1; it keeps its place when lists come.
    int current() const;
    const KvTimeLineMark& select(int index);
    /// The neighbours of the current one, or -1.
    int previous() const;
    int next() const;

private:
    struct Span {
        qint64 start;
        qint64 end;
    };
    /// Of the month and the one before, in local time.
    static Span spanAskedFor(const QDate& month);
    void limit();

    QVector<KvTimeLineMark> m_all;
    QVector<QDate> m_asked;  ///< first days of the months, oldest request first
    QDate m_lastAsked;
    QDate m_awaitedDay;
    bool m_isFirstList = true;  ///< nothing has been played by itself yet
    int m_currentStart = -1;
};

/// Lets clicks pass only so often. Times are in milliseconds of a steady clock.
class ClickGuard {
public:
    static constexpr qint64 kIntervalMs = 1000;

    bool accepts(qint64 now);

private:
    qint64 m_last = -1;  ///< the last accepted one
};

}  // namespace orvelle
