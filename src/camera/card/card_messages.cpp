#include "camera/card/card_messages.h"

#include <QDateTime>
#include <QtEndian>

#include <algorithm>

#include "link/limits.h"

namespace orvelle {

namespace {

constexpr size_t kListHeaderBytes = 4;
constexpr size_t kRunBytes = 8;
constexpr size_t kMaxRuns = (kMaxControlBytes - kListHeaderBytes) / kRunBytes;

std::optional<int64_t> readTime(const uint8_t* data, const std::optional<int>& minutesEast) {
    const QDate date(qFromLittleEndian<uint16_t>(data), data[2], data[3]);
    const QTime time(data[5], data[6], data[7]);
    if (!date.isValid() || !time.isValid())
        return {};
    return minutesEast ? QDateTime(date, time, Qt::UTC).toSecsSinceEpoch() - *minutesEast * 60
                       : QDateTime(date, time, Qt::LocalTime).toSecsSinceEpoch();
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

std::vector<uint8_t> missingCardReply() {
    return {0, 1, 0, 0};
}

}  // namespace orvelle
