#include "camera/card/card_messages.h"

#include <QDateTime>
#include <QtEndian>

#include <algorithm>

#include "link/limits.h"

namespace orvelle {

namespace {

constexpr size_t kListHeaderBytes = 4;
constexpr size_t kRunBytes = 8;
constexpr int kOverviewHeaderBytes = 16;
constexpr uint32_t kSendsDownloads = 8;
constexpr size_t kMaxRuns = (kMaxControlBytes - kListHeaderBytes) / kRunBytes;

std::optional<int64_t> readTime(const uint8_t* data, const std::optional<int>& minutesEast) {
    const QDate date(qFromLittleEndian<uint16_t>(data), data[2], data[3]);
    const QTime time(data[5], data[6], data[7]);
    if (!date.isValid() || !time.isValid())
        return {};
    return minutesEast ? QDateTime(date, time, Qt::UTC).toSecsSinceEpoch() - *minutesEast * 60
                       : QDateTime(date, time, Qt::LocalTime).toSecsSinceEpoch();
}

/// Counted from year 0.
int monthOf(int64_t sec, const std::optional<int>& minutesEast) {
    const QDate date =
        (minutesEast ? QDateTime::fromSecsSinceEpoch(sec + *minutesEast * 60, Qt::UTC)
                     : QDateTime::fromSecsSinceEpoch(sec, Qt::LocalTime))
            .date();
    return date.year() * 12 + date.month() - 1;
}

void append32(std::vector<uint8_t>& payload, uint32_t value) {
    for (int byte = 0; byte < 4; ++byte)
        payload.push_back(static_cast<uint8_t>(value >> (8 * byte)));
}

}  // namespace

PlayRequest readPlayRequest(const uint8_t* data) {
    return {qFromLittleEndian<uint32_t>(data + 4), readTime(data + 12, 0)};
}

RoomGrant readRoomGrant(const uint8_t* data) {
    return {static_cast<int>(qFromLittleEndian<uint32_t>(data)),
            qFromLittleEndian<uint32_t>(data + 4), qFromLittleEndian<uint64_t>(data + 8)};
}

ListRequest readListRequest(const uint8_t* data, const std::optional<int>& minutesEast) {
    const auto from = readTime(data + 4, minutesEast);
    const auto to = readTime(data + 12, minutesEast);
    return from && to ? ListRequest{*from, *to} : ListRequest();
}

std::vector<uint8_t> playReply(PlayCommand command, int32_t result) {
    std::vector<uint8_t> payload;
    append32(payload, static_cast<uint32_t>(command));
    append32(payload, static_cast<uint32_t>(result));
    return payload;
}

std::vector<uint8_t> formatReply(bool isFormatted) {
    return {0, 0, 0, 0, static_cast<uint8_t>(isFormatted ? 0 : 1), 0, 0, 0};
}

std::vector<uint8_t> listReply(const std::vector<RecordingRun>& runs) {
    const size_t count = std::min(runs.size(), kMaxRuns);
    std::vector<uint8_t> payload = {static_cast<uint8_t>(count), 0, 0, 0};
    for (size_t i = runs.size() - count; i < runs.size(); ++i) {
        append32(payload, static_cast<uint32_t>(runs[i].startSec));
        append32(payload, runs[i].minutes);
    }
    return payload;
}

std::vector<uint8_t> overviewReply(const CardOverview& card,
                                   const std::optional<int>& minutesEast) {
    const uint32_t flags = (card.isPresent ? 0 : 1) | (card.isWritable ? 0 : 2) |
                           (card.isFull ? 4 : 0) | kSendsDownloads;
    const std::vector<int64_t>& days = card.daySec;
    std::vector<uint8_t> payload;
    append32(payload, flags);
    append32(payload, static_cast<uint32_t>(card.oldestSec));
    append32(payload, static_cast<uint32_t>(card.newestSec));
    const int first = days.empty() ? 0 : monthOf(days.front(), minutesEast);
    const int wanted = days.empty() ? 0 : monthOf(days.back(), minutesEast) - first + 1;
    const int count = std::min<int>(wanted, (kMaxControlBytes - kOverviewHeaderBytes) * 8);
    append32(payload, static_cast<uint32_t>(first | count << 16));
    payload.resize(kOverviewHeaderBytes + (count + 7) / 8);
    for (const int64_t daySec : days) {
        const int month = monthOf(daySec, minutesEast) - first;
        if (month >= 0 && month < count)
            payload[kOverviewHeaderBytes + month / 8] |= 1 << (month % 8);
    }
    return payload;
}

std::vector<uint8_t> missingCardReply() {
    return {0, 1, 0, 0};
}

}  // namespace orvelle
