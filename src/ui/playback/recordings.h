#pragma once

#include <QDate>
#include <QVector>

#include "ui/playback/time_line_mark.h"

namespace orvelle {

struct SMsgAVIoctrlListEventResp_VBK;

/// The runs of an event list, each as one stretch of time. Absurd times are left out.
QVector<KvTimeLineMark> runsOf(const SMsgAVIoctrlListEventResp_VBK& list);

/// The recordings of one minute that runs consist of and that start from `start` on and before
/// `end`, up to a bound that no honest camera reaches.
QVector<KvTimeLineMark> filesOf(const QVector<KvTimeLineMark>& runs, qint64 start, qint64 end);

/// What is known of the recordings on one camera's card: which months were asked for, what the
/// answers told, and which recording plays. One thread.
///
/// A request covers a month and the one before. Answers carry no month, but come in the order of
/// the requests; an answer that nobody waits for changes nothing. A quiet request is one that the
/// user does not know of.
class Recordings {
public:
    static constexpr int kMaxMarks = 100000;

    /// For another camera.
    void clear() { *this = Recordings(); }

    /// Whether this month has to be asked for: false when it is the one last asked for.
    bool ask(const QDate& month);
    /// The first of the month last asked for, or invalid.
    const QDate& lastAsked() const { return m_lastAsked; }
    /// For what was recorded meanwhile. False when an answer for this month is still to come, for
    /// which the user waits from now on unless `isQuiet`.
    bool askAgain(const QDate& month, bool isQuiet);
    /// Whether the user waits for an answer.
    bool isAsking() const;
    /// Every month may be asked for again.
    void forgetMonths() { m_lastAsked = QDate(); }
    /// No answer will come to what was asked for.
    void giveUp();
    void giveUpQuiet();
    /// Replaces what was known of the two months of the oldest request that the runs fit, so that
    /// a late answer to a request that was given up is not taken for another's; older requests
    /// have lost theirs. False for an answer to none.
    bool answer(const QVector<KvTimeLineMark>& runs);

    /// Seconds since 1970: before it nothing is known. 1 when nothing is known at all.
    qint64 earliest() const;
    /// In order, each start once.
    const QVector<KvTimeLineMark>& all() const { return m_all; }
    bool isEmpty() const { return m_all.isEmpty(); }
    /// Seconds since 1970. -1 when nothing was recorded then.
    int indexAt(qint64 time) const;
    /// The first one that ends behind a moment, or -1.
    int indexEndingAfter(qint64 time) const;
    /// The first one of a local day, or -1.
    int indexOn(const QDate& day) const;

    /// The day to be played as soon as its month is known; invalid for none.
    void awaitDay(const QDate& day) { m_awaitedDay = day; }
    /// Whether an answer that is still to come may tell more of this day.
    bool isAnswerPending(const QDate& day) const;
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
    /// Seconds since 1970; 0 without one.
    qint64 currentEnd() const;
    /// The neighbours of the current one, or -1.
    int previous() const;
    int next() const;

private:
    struct Span {
        qint64 start;
        qint64 end;
    };
    struct Request {
        QDate month;  ///< its first day
        bool isQuiet;
    };
    /// Of the month and the one before, in local time.
    static Span spanAskedFor(const QDate& month);
    void replace(const Span& span, const QVector<KvTimeLineMark>& files);
    void limit();

    QVector<KvTimeLineMark> m_all;
    QVector<Request> m_asked;     ///< oldest first
    qint64 m_earliestAsked = -1;  ///< of what was answered
    QDate m_lastAsked;
    QDate m_awaitedDay;
    bool m_isFirstList = true;  ///< nothing has been played by itself yet
    int m_currentStart = -1;
};

}  // namespace orvelle
