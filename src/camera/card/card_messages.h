#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "camera/card/card_store.h"

// What clients ask of a memory card, and the answers. Requests are at least as long as their
// layout; a calendar time is year 0 (2), month 2, day 3, weekday 4 (not read), hour 5, minute 6,
// second 7.

namespace orvelle {

/// Commands of record playback, of request and answer.
enum class PlayCommand : uint32_t { kStop = 1, kEnd = 7, kStart = 16 };

/// Why a playback is refused; results of PlayCommand::kStart below the channel numbers.
enum PlayRefusal : int32_t { kNoCard = -1, kNoRecording = -2, kTooManyPlaybacks = -3 };

struct PlayRequest {
    uint32_t command = 0;
    std::optional<int64_t> fromSec;  ///< since 1970; none: no such time
};

/// command 4, time 12; the time is in UTC.
PlayRequest readPlayRequest(const uint8_t* data);

/// How much a client has room for on a channel, counted from the first frame on.
struct RoomGrant {
    int channel = 0;
    uint32_t frames = 0;
    uint64_t bytes = 0;
};

/// channel 0, frames 4, bytes 8.
RoomGrant readRoomGrant(const uint8_t* data);

struct ListRequest {
    int64_t fromSec = 0;
    int64_t toSec = -1;  ///< included
};

/// from 4, to 12, in the camera's clock: `minutesEast` of UTC, or this machine's. An empty span
/// when either is no time.
ListRequest readListRequest(const uint8_t* data, const std::optional<int>& minutesEast);

/// command 0, result 4.
std::vector<uint8_t> playReply(PlayCommand command, int32_t result);
/// storage 0, result 4 of 8 bytes.
std::vector<uint8_t> formatReply(bool isFormatted);
/// count 0, card missing 1, then start and minutes of 4 bytes each from 4 on; of more runs than
/// a message holds the newest.
std::vector<uint8_t> listReply(const std::vector<RecordingRun>& runs);
std::vector<uint8_t> missingCardReply();

/// flags 0 (1 missing, 2 cannot be written, 4 full, 8 recordings can be downloaded), oldest and
/// newest start 4 and 8, first month 12 (counted from year 0) and number of months 14, of 2 bytes
/// each, then a bit a month from 16 on. Months are those of the camera's clock, as in
/// readListRequest().
std::vector<uint8_t> overviewReply(const CardOverview& card, const std::optional<int>& minutesEast);

}  // namespace orvelle
