#include "ui/playback/card_list.h"

#include <utility>

#include "device/device_messages.h"
#include "ui/playback/time_line_rules.h"

namespace orvelle {

namespace {

constexpr qint64 kRefreshMs = 60000;
constexpr int kInfoRequestBytes = 4;

}  // namespace

CardList::CardList(Send send, Clock clock) : m_send(std::move(send)), m_clock(std::move(clock)) {}

void CardList::clear() {
    m_recordings.clear();
    m_card = Card::kUnknown;
    m_newerThan = -1;
}

bool CardList::sendInfoRequest() {
    return m_send(IOTYPE_USER_IPCAM_DEVINFO_REQ, QByteArray(kInfoRequestBytes, '\0'));
}

bool CardList::open() {
    m_listAskedMs = m_clock();
    const bool isSent = sendInfoRequest();
    m_card = isSent ? Card::kAsked : Card::kUnknown;
    return isSent;
}

bool CardList::check() {
    return sendInfoRequest();
}

void CardList::giveUp() {
    m_recordings.giveUp();
    if (m_card == Card::kAsked)
        m_card = Card::kUnknown;
}

CardList::Card CardList::noteCard(int totalMiB) {
    return std::exchange(m_card, totalMiB > 0 ? Card::kPresent : Card::kMissing);
}

CardList::Asked CardList::askMonth(const QDate& day) {
    if (!m_recordings.ask(day))
        return Asked::kKnown;
    return sendListRequest(day) ? Asked::kSent : Asked::kNotTaken;
}

bool CardList::sendListRequest(const QDate& day) {
    m_listAskedMs = m_clock();
    return m_send(IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ,
                  SMsgAVIoctrlListEventReq::forMonth(day).encode());
}

bool CardList::lookForNewer(qint64 time) {
    m_newerThan = time;
    const QDate today = QDate::currentDate();
    return !m_recordings.askAgain(today, false) || sendListRequest(today);
}

qint64 CardList::endSearch() {
    return std::exchange(m_newerThan, -1);
}

void CardList::refreshQuietly(const QDate& shown, int answerMs) {
    const qint64 sinceAskedMs = m_clock() - m_listAskedMs;
    if (sinceAskedMs >= answerMs)
        m_recordings.giveUpQuiet();
    const QDate today = QDate::currentDate();
    const bool isPresent = shown >= firstOfMonth(today);
    if (sinceAskedMs < kRefreshMs || !isPresent || m_card == Card::kMissing || isAwaited())
        return;
    if (m_recordings.askAgain(today, true) && !sendListRequest(today))
        m_recordings.giveUpQuiet();
}

}  // namespace orvelle
