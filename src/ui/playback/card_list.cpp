#include "ui/playback/card_list.h"

#include <QDateTime>

#include <utility>

#include "ui/playback/time_line_rules.h"

namespace orvelle {

namespace {

constexpr qint64 kRefreshMs = 60000;
/// How often the card is looked for: while it is there, and while it is missing.
constexpr qint64 kCheckCardMs = 5000;
constexpr qint64 kMissingCardMs = 2000;
constexpr int kInfoRequestBytes = 4;
constexpr int kOwnRequestBytes = 8;
/// A clock that is as wrong as this is not the camera's zone.
constexpr qint64 kFutureSeconds = 3600;
/// What daylight saving may have moved the camera's clock since.
constexpr qint64 kClockChangeSeconds = 3600;

}  // namespace

CardList::CardList(Send send, Clock clock) : m_send(std::move(send)), m_clock(std::move(clock)) {}

void CardList::clear() {
    m_recordings.clear();
    m_card = Card::kUnknown;
    m_overview.reset();
    m_minutesEast.reset();
}

bool CardList::sendEmpty(uint32_t type, int bytes) {
    return m_send(type, QByteArray(bytes, '\0'));
}

bool CardList::open() {
    const bool isSent = check();
    m_card = isSent ? Card::kAsked : Card::kUnknown;
    return isSent;
}

bool CardList::check() {
    m_cardAskedMs = m_clock();
    return sendEmpty(IOTYPE_USER_IPCAM_DEVINFO_REQ, kInfoRequestBytes);
}

void CardList::giveUp() {
    m_recordings.giveUp();
    if (m_card == Card::kAsked)
        m_card = Card::kUnknown;
}

CardList::Card CardList::noteCard(int totalMiB) {
    return std::exchange(m_card, totalMiB > 0 ? Card::kPresent : Card::kMissing);
}

bool CardList::noteRuns(const QVector<KvTimeLineMark>& runs) {
    if (!m_recordings.answer(runs, QDateTime::currentSecsSinceEpoch() + kFutureSeconds))
        return false;
    goOn();
    return true;
}

void CardList::noteOverview(const CardOverviewReply& overview) {
    m_overview = overview;
    m_recordings.noteOldest(overview.oldestSec);
}

void CardList::noteZone(int minutesEast) {
    m_minutesEast = minutesEast;
    goOn();
}

/// With the next question, if there is one.
bool CardList::goOn() {
    if (m_recordings.isRestDue())
        return m_minutesEast && sendListRequest(*m_recordings.askRest());
    const QDate month = m_recordings.monthForWish();
    return !month.isValid() || (m_recordings.askAgain(month, false) && sendListRequest(month));
}

CardList::Asked CardList::askMonth(const QDate& day) {
    const bool isFirst = !m_recordings.lastAsked().isValid();
    if (!m_recordings.ask(day))
        return Asked::kKnown;
    if (!sendListRequest(day))
        return Asked::kNotTaken;
    if (isFirst) {
        sendEmpty(IOTYPE_CARD_OVERVIEW_REQ, kOwnRequestBytes);
        sendEmpty(IOTYPE_USER_IPCAM_GET_TIMEZONE_REQ, kOwnRequestBytes);
    }
    return Asked::kSent;
}

bool CardList::sendListRequest(const QDate& day) {
    m_listAskedMs = m_clock();
    if (firstOfMonth(day) == firstOfMonth(QDate::currentDate()))
        m_refreshedMs = m_listAskedMs;
    return m_send(IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ,
                  SMsgAVIoctrlListEventReq::forMonth(day).encode());
}

/// The end in the camera's clock, a little later rather than earlier, as nothing may be left out.
bool CardList::sendListRequest(const TimeSpan& span) {
    m_listAskedMs = m_clock();
    const QDateTime end = QDateTime::fromSecsSinceEpoch(
        span.end + *m_minutesEast * 60 + kClockChangeSeconds, Qt::UTC);
    const auto request =
        SMsgAVIoctrlListEventReq::between(QDateTime::fromSecsSinceEpoch(span.start), end);
    return m_send(IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ, request.encode());
}

bool CardList::wish(Recordings::Wish wish, qint64 time) {
    m_recordings.wish(wish, time);
    if (wish != Recordings::Wish::kNewer || m_recordings.monthForWish().isValid())
        return goOn();
    const QDate today = QDate::currentDate();
    return !m_recordings.askAgain(today, false) || sendListRequest(today);
}

bool CardList::wishDay(const QDate& day) {
    m_recordings.wishDay(day);
    return goOn();
}

bool CardList::isRefreshDue(const TimeSpan& shown) const {
    const qint64 month = firstOfMonth(QDate::currentDate()).startOfDay().toSecsSinceEpoch();
    return m_clock() - m_refreshedMs >= kRefreshMs && shown.end >= month;
}

void CardList::refreshQuietly(const TimeSpan& shown, int answerMs) {
    const qint64 now = m_clock();
    if (now - m_cardAskedMs >= (m_card == Card::kMissing ? kMissingCardMs : kCheckCardMs))
        check();
    if (now - m_listAskedMs >= answerMs)
        m_recordings.giveUpQuiet();
    if (m_card != Card::kPresent || isAwaited() || m_recordings.isPending())
        return;
    const QDate today = QDate::currentDate();
    if (isRefreshDue(shown)) {
        if (m_recordings.askAgain(today, true) && !sendListRequest(today))
            m_recordings.giveUpQuiet();
        sendEmpty(IOTYPE_CARD_OVERVIEW_REQ, kOwnRequestBytes);
        return;
    }
    const TimeSpans unknown = m_recordings.unknown(shown);
    if (unknown.empty())
        return;
    const QDate month = QDateTime::fromSecsSinceEpoch(unknown.back().end - 1).date();
    if (m_recordings.askAgain(month, true) && !sendListRequest(month))
        m_recordings.giveUpQuiet();
}

}  // namespace orvelle
