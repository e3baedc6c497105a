#pragma once

#include <QByteArray>
#include <QDate>

#include <cstdint>
#include <functional>
#include <optional>

#include "device/device_messages.h"
#include "ui/playback/recordings.h"

namespace orvelle {

/// What one camera tells of its card: whether there is one, and what was recorded. Asks for it,
/// goes on asking where an answer did not tell all, and knows what it still waits for. Interface
/// thread.
///
///     kUnknown --open--> kAsked --> kPresent <--> kMissing
///
/// Answers that nobody asked for are taken, too, as others ask for the same.
class CardList {
public:
    enum class Card {
        kUnknown,
        kAsked,  ///< the answer starts the list
        kPresent,
        kMissing,
    };

    /// To the camera; false when it takes nothing now.
    using Send = std::function<bool(uint32_t type, const QByteArray& payload)>;
    /// Milliseconds of a steady clock.
    using Clock = std::function<qint64()>;

    CardList(Send send, Clock clock);

    /// For another camera.
    void clear();
    /// Asks for the card, whose answer starts the list.
    bool open();
    /// Asks whether the card is still there.
    bool check();
    /// Nothing that was asked for will be answered.
    void giveUp();

    // --- what the camera says ---

    /// Of the card's size; returns what was known before.
    Card noteCard(int totalMiB);
    /// False for an answer that nobody waits for.
    bool noteRuns(const QVector<KvTimeLineMark>& runs);
    void noteOverview(const CardOverviewReply& overview);
    /// Minutes by which the camera's clock is east of UTC.
    void noteZone(int minutesEast);

    Card card() const { return m_card; }
    const std::optional<CardOverviewReply>& overview() const { return m_overview; }
    const std::optional<int>& minutesEast() const { return m_minutesEast; }

    // --- what the user wants ---

    enum class Asked { kKnown, kSent, kNotTaken };
    /// For the month of a day and the one before, unless it is the one last asked for.
    Asked askMonth(const QDate& day);
    /// For whatever a wish needs; takeStart() of the recordings tells what became of it.
    bool wish(Recordings::Wish wish, qint64 time);
    bool wishDay(const QDate& day);
    /// Once a second: brings what was recorded meanwhile while the user, who looks at `shown`,
    /// sees the present, and what nobody has asked for where he looks. What is not answered within
    /// `answerMs` is given up. A card that is missing is looked for.
    void refreshQuietly(const TimeSpan& shown, int answerMs);

    /// Whether the user waits for an answer.
    bool isAwaited() const { return m_card == Card::kAsked || m_recordings.isAsking(); }

    Recordings& recordings() { return m_recordings; }
    const Recordings& recordings() const { return m_recordings; }

private:
    bool sendEmpty(uint32_t type, int bytes);
    bool sendListRequest(const QDate& day);
    bool sendListRequest(const TimeSpan& span);
    bool goOn();
    bool isRefreshDue(const TimeSpan& shown) const;

    const Send m_send;
    const Clock m_clock;
    Recordings m_recordings;
    Card m_card = Card::kUnknown;
    std::optional<CardOverviewReply> m_overview;
    std::optional<int> m_minutesEast;
    qint64 m_listAskedMs = 0;
    qint64 m_refreshedMs = 0;
    qint64 m_cardAskedMs = 0;
};

}  // namespace orvelle
