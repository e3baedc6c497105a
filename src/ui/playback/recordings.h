#pragma once

#include <QDate>
#include <QVector>

#include <optional>

#include "ui/playback/time_line_mark.h"
#include "ui/playback/time_line_rules.h"

namespace orvelle {

struct SMsgAVIoctrlListEventResp_VBK;

/// The runs of an event list, each as one stretch of time. Absurd times are left out.
QVector<KvTimeLineMark> runsOf(const SMsgAVIoctrlListEventResp_VBK& list);

/// The recordings of one minute that runs consist of and that start from `start` on and before
/// `end`, up to a bound that no honest camera reaches.
QVector<KvTimeLineMark> filesOf(const QVector<KvTimeLineMark>& runs, qint64 start, qint64 end);

/// What is known of the recordings on one camera's card: which months were asked for, what the
/// answers told, which time is known to the last recording, and which recording plays. One thread.
///
/// A request covers a month and the one before. Answers carry no month, but come in the order of
/// the requests; an answer that nobody waits for changes nothing. A quiet request is one that the
/// user does not know of. An answer that is full tells the newest runs only: askRest() gives the
/// time that is to be asked for next.
class Recordings {
public:
    static constexpr int kMaxAnswerMarks = 100'000;
    /// Nearly four years of minutes.
    static constexpr int kMaxMarks = 2'000'000;
    /// The runs that one message holds.
    static constexpr int kFullAnswer = 173;

    /// For another camera.
    void clear() { *this = Recordings(); }

    /// Whether this month has to be asked for: false when it is known, or asked for already.
    bool ask(const QDate& month);
    /// The first of the month last asked for, or invalid.
    const QDate& lastAsked() const { return m_lastAsked; }
    /// For what was recorded meanwhile. False when an answer for this month is still to come, for
    /// which the user waits from now on unless `isQuiet`.
    bool askAgain(const QDate& month, bool isQuiet);
    /// The time before the newest full answer that is not known yet and now counts as asked for.
    std::optional<TimeSpan> askRest();
    bool isRestDue() const { return m_rest.has_value(); }
    /// Whether any answer is to come, quiet or not.
    bool isPending() const { return !m_asked.isEmpty(); }
    /// Whether the user waits for an answer, or for a wish to come true.
    bool isAsking() const;
    /// Every month may be asked for again, and nothing is known for sure.
    void forgetMonths();
    /// No answer will come to what was asked for; a wish, but for the newest, ends with that.
    void giveUp();
    void giveUpQuiet();
    /// Replaces what was known of the time of the oldest request that the runs fit, so that a late
    /// answer to a request that was given up is not taken for another's; older requests have lost
    /// theirs. Recordings behind `latest` are left out: a clock was wrong. False for an answer to
    /// none.
    bool answer(const QVector<KvTimeLineMark>& runs, qint64 latest);
    /// The oldest one on the card, as the camera says; what was before it is gone.
    void noteOldest(qint64 start);

    /// Seconds since 1970: before it is nothing, or nothing is known. 1 when nothing is known.
    qint64 earliest() const;
    /// Whether all recordings of these times are known.
    bool knows(qint64 time) const;
    bool knows(const QDate& day) const;
    /// The parts of a stretch of time of which nobody was asked yet, or not to the end.
    TimeSpans unknown(const TimeSpan& span) const;

    /// In order, each start once.
    const QVector<KvTimeLineMark>& all() const { return m_all; }
    bool isEmpty() const { return m_all.isEmpty(); }
    /// Seconds since 1970. -1 when nothing was recorded then.
    int indexAt(qint64 time) const;
    /// The first one that ends behind a moment, or -1.
    int indexEndingAfter(qint64 time) const;
    /// The first one of a local day, or -1.
    int indexOn(const QDate& day) const;

    /// What was recorded of a stretch of time, each run of minutes that follow each other as one:
    /// whole recordings, also at both ends.
    QVector<KvTimeLineMark> runsWithin(const TimeSpan& span) const;

    /// What is to be played as soon as enough is known; the newest one, once, at the beginning.
    enum class Wish {
        kNone,
        kNewest,
        kDay,     ///< the first one of a day
        kMoment,  ///< from a moment on, or the next one
        kNewer,   ///< the next one that ends behind a moment
        kOlder,   ///< the last one that starts before a moment
    };
    /// `time` is in seconds since 1970.
    void wish(Wish wish, qint64 time);
    void wishDay(const QDate& day);
    Wish wished() const { return m_wish; }
    /// A search for a moment, or for newer or older ones, is over; other wishes stay.
    void dropSearch();
    /// The month that the wish needs next, or invalid for none, or when an answer is to come.
    QDate monthForWish() const;
    struct Start {
        Wish wish = Wish::kNone;  ///< kNone: nothing to do yet
        int index = -1;           ///< -1: nothing was recorded then
        qint64 from = 0;          ///< seconds since 1970; 0 for the beginning
    };
    /// What became of the wish, once it is clear.
    Start takeStart();

    /// The recording that plays or played last, or -1; it keeps its place when lists come.
    int current() const;
    const KvTimeLineMark& select(int index);
    /// What plays has reached this moment; the recording that holds it, if any, is the current one.
    void follow(qint64 time);
    /// Seconds since 1970; 0 without one.
    qint64 currentStart() const { return m_currentStart < 0 ? 0 : m_currentStart; }
    qint64 currentEnd() const;
    /// The neighbours of the current one; -1 where there is none, or one may still be unknown.
    int previous() const;
    int next() const;

private:
    struct Request {
        TimeSpan span;
        bool isQuiet;
    };
    void add(const TimeSpan& span, bool isQuiet);
    void replace(const TimeSpan& span, QVector<KvTimeLineMark> files);
    void setKnown(const TimeSpan& span);
    qint64 knownSince(qint64 time) const;
    qint64 knownUntil(qint64 time) const;
    int olderThan(qint64 time) const;
    int newerThan(qint64 time) const;
    bool isOlderPossible(qint64 time) const;
    Start found(int index, qint64 from);

    QVector<KvTimeLineMark> m_all;
    TimeSpans m_known;
    QVector<Request> m_asked;  ///< oldest first
    std::optional<Request> m_rest;
    QDate m_lastAsked;
    qint64 m_oldest = 0;  ///< as the camera says; 0: it does not
    Wish m_wish = Wish::kNewest;
    qint64 m_wishTime = 0;
    QDate m_wishDay;
    int m_emptyAnswers = 0;  ///< since the wish, to questions about older ones
    int m_currentStart = -1;
};

}  // namespace orvelle
