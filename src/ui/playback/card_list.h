#pragma once

#include <QByteArray>
#include <QDate>

#include <cstdint>
#include <functional>

#include "ui/playback/recordings.h"

namespace orvelle {

/// What one camera tells of its card: whether there is one, and what was recorded. Asks for it,
/// and knows what it still waits for. Interface thread.
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
    /// Keeps what the camera said of its size, and returns what was known before.
    Card noteCard(int totalMiB);
    Card card() const { return m_card; }

    enum class Asked { kKnown, kSent, kNotTaken };
    /// For the month of a day and the one before, unless it is the one last asked for.
    Asked askMonth(const QDate& day);
    /// For what was recorded behind `time`, seconds since 1970; endSearch() tells.
    bool lookForNewer(qint64 time);
    bool isLookingForNewer() const { return m_newerThan >= 0; }
    /// Where the search began.
    qint64 endSearch();
    /// Once a second: brings what was recorded meanwhile while the user, who looks at `shown`,
    /// sees the present. What is not answered within `answerMs` is given up.
    void refreshQuietly(const QDate& shown, int answerMs);

    /// Whether the user waits for an answer.
    bool isAwaited() const { return m_card == Card::kAsked || m_recordings.isAsking(); }

    Recordings& recordings() { return m_recordings; }
    const Recordings& recordings() const { return m_recordings; }

private:
    bool sendInfoRequest();
    bool sendListRequest(const QDate& day);

    const Send m_send;
    const Clock m_clock;
    Recordings m_recordings;
    Card m_card = Card::kUnknown;
    qint64 m_listAskedMs = 0;
    qint64 m_newerThan = -1;  ///< -1: no search
};

}  // namespace orvelle
