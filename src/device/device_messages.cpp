#include "device/device_messages.h"

#include <QtEndian>

#include <algorithm>

#include "core/safe_name.h"

namespace orvelle {
namespace {

// Appends little-endian fields one after the other.
class Writer {
public:
    Writer& u8(uint8_t value) { return append(value); }
    Writer& u16(uint16_t value) { return append(value); }
    Writer& u32(uint32_t value) { return append(value); }
    Writer& bytes(const QByteArray& value) {
        m_bytes.append(value);
        return *this;
    }
    Writer& reserved(int size) {
        m_bytes.append(size, '\0');
        return *this;
    }
    QByteArray result() const { return m_bytes; }

private:
    template <class Number>
    Writer& append(Number value) {
        char buffer[sizeof(Number)];
        qToLittleEndian(value, buffer);
        m_bytes.append(buffer, static_cast<int>(sizeof buffer));
        return *this;
    }

    QByteArray m_bytes;
};

template <class Number>
std::optional<Number> numberAt(const QByteArray& payload, int offset) {
    if (payload.size() < offset + static_cast<int>(sizeof(Number)))
        return std::nullopt;
    return qFromLittleEndian<Number>(payload.constData() + offset);
}

// Of a field of `size` bytes: what was received of it, up to its NUL, made safe to show.
QString textAt(const QByteArray& payload, int offset, int size) {
    const QByteArray field = payload.mid(offset, size);
    const auto length =
        static_cast<int>(qstrnlen(field.constData(), static_cast<uint>(field.size())));
    return safeName(QString::fromUtf8(field.constData(), length));
}

}  // namespace

STimeDay STimeDay::from(const QDate& date, const QTime& time) {
    STimeDay day;
    day.year = static_cast<uint16_t>(date.year());
    day.month = static_cast<uint8_t>(date.month());
    day.day = static_cast<uint8_t>(date.day());
    day.wday = static_cast<uint8_t>(date.dayOfWeek());
    day.hour = static_cast<uint8_t>(time.hour());
    day.minute = static_cast<uint8_t>(time.minute());
    day.second = static_cast<uint8_t>(time.second());
    return day;
}

QByteArray STimeDay::encode() const {
    return Writer().u16(year).u8(month).u8(day).u8(wday).u8(hour).u8(minute).u8(second).result();
}

SMsgAVIoctrlPlayRecord SMsgAVIoctrlPlayRecord::start(const STimeDay& from) {
    SMsgAVIoctrlPlayRecord message;
    message.channel = 1;
    message.command = kStart;
    message.sTimeDay = from;
    return message;
}

QByteArray SMsgAVIoctrlPlayRecord::encode() const {
    return Writer()
        .u32(channel)
        .u32(command)
        .u32(param)
        .bytes(sTimeDay.encode())
        .reserved(4)
        .result();
}

SMsgAVIoctrlPlayRecordResp SMsgAVIoctrlPlayRecordResp::decode(const QByteArray& payload) {
    return {numberAt<uint32_t>(payload, 0), numberAt<int32_t>(payload, 4)};
}

QByteArray PlaybackRoom::encode() const {
    return Writer()
        .u32(channel)
        .u32(frames)
        .u32(static_cast<uint32_t>(bytes))
        .u32(static_cast<uint32_t>(bytes >> 32))
        .result();
}

StreamQualityReply StreamQualityReply::decode(const QByteArray& payload) {
    return {numberAt<uint8_t>(payload, 4)};
}

SMsgAVIoctrlDeviceInfoResp SMsgAVIoctrlDeviceInfoResp::decode(const QByteArray& payload) {
    return {textAt(payload, 0, 16), numberAt<uint32_t>(payload, 32),
            numberAt<uint32_t>(payload, 40), numberAt<uint32_t>(payload, 44)};
}

SMsgAVIoctrlGetWifiResp_vbk SMsgAVIoctrlGetWifiResp_vbk::decode(const QByteArray& payload) {
    return {textAt(payload, 0, 32), textAt(payload, 68, 16), textAt(payload, 84, -1)};
}

QByteArray FormatStorageRequest::encode() const {
    return Writer().u32(storage).reserved(4).result();
}

SMsgAVIoctrlFormatExtStorageResp SMsgAVIoctrlFormatExtStorageResp::decode(
    const QByteArray& payload) {
    return {numberAt<uint32_t>(payload, 0), numberAt<uint8_t>(payload, 4)};
}

TimeZoneReply TimeZoneReply::decode(const QByteArray& payload) {
    return {numberAt<int32_t>(payload, 8)};
}

SMsgAVIoctrlListEventReq SMsgAVIoctrlListEventReq::forMonth(const QDate& day) {
    const QDate first(day.year(), day.month(), 1);
    SMsgAVIoctrlListEventReq message;
    message.start = STimeDay::from(first.addMonths(-1), QTime(0, 0, 0));
    message.end = STimeDay::from(first.addMonths(1).addDays(-1), QTime(23, 59, 59));
    return message;
}

SMsgAVIoctrlListEventReq SMsgAVIoctrlListEventReq::between(const QDateTime& first,
                                                           const QDateTime& last) {
    SMsgAVIoctrlListEventReq message;
    message.start = STimeDay::from(first.date(), first.time());
    message.end = STimeDay::from(last.date(), last.time());
    return message;
}

QByteArray SMsgAVIoctrlListEventReq::encode() const {
    return Writer()
        .u32(channel)
        .bytes(start.encode())
        .bytes(end.encode())
        .u8(event)
        .u8(status)
        .reserved(2)
        .result();
}

SMsgAVIoctrlListEventResp_VBK SMsgAVIoctrlListEventResp_VBK::decode(const QByteArray& payload) {
    SMsgAVIoctrlListEventResp_VBK reply;
    reply.count = numberAt<uint8_t>(payload, 0).value_or(0);
    reply.misscard = numberAt<uint8_t>(payload, 1).value_or(0);
    for (int i = 0; i < reply.count; ++i) {
        const auto start = numberAt<uint32_t>(payload, 4 + 8 * i);
        const auto num = numberAt<uint32_t>(payload, 8 + 8 * i);
        if (!start || !num)
            break;
        reply.runs.append({*start, std::min(*num, kMaxRunMinutes)});
    }
    return reply;
}

std::optional<CardOverviewReply> CardOverviewReply::decode(const QByteArray& payload) {
    enum Flag { kMissing = 1, kReadOnly = 2, kFull = 4, kCanDownload = 8 };
    constexpr int kMonthsAt = 16;
    constexpr int kMaxYear = 9999;
    const auto flags = numberAt<uint8_t>(payload, 0);
    const auto first = numberAt<uint16_t>(payload, 12);
    const auto count = numberAt<uint16_t>(payload, 14);
    if (!flags || !first || !count || payload.size() < kMonthsAt + (*count + 7) / 8 ||
        (*first + *count) / 12 > kMaxYear)
        return {};
    CardOverviewReply reply;
    reply.isMissing = *flags & kMissing;
    reply.isReadOnly = *flags & kReadOnly;
    reply.isFull = *flags & kFull;
    reply.canDownload = *flags & kCanDownload;
    reply.oldestSec = numberAt<uint32_t>(payload, 4).value_or(0);
    reply.newestSec = numberAt<uint32_t>(payload, 8).value_or(0);
    for (int i = 0; i < *count; ++i)
        if (payload.at(kMonthsAt + i / 8) >> (i % 8) & 1)
            reply.months.append(QDate((*first + i) / 12, (*first + i) % 12 + 1, 1));
    return reply;
}

DeviceTypeReply DeviceTypeReply::decode(const QByteArray& payload) {
    return {numberAt<int32_t>(payload, 0)};
}

uint8_t SMsgAVIoctrlPtzCmd::controlFor(int directions) {
    switch (directions) {
        case kUp:
            return 1;
        case kDown:
            return 2;
        case kLeft:
            return 3;
        case kUp | kLeft:
            return 4;
        case kDown | kLeft:
            return 5;
        case kRight:
            return 6;
        case kUp | kRight:
            return 7;
        case kDown | kRight:
            return 8;
        default:
            return 0;
    }
}

SMsgAVIoctrlPtzCmd SMsgAVIoctrlPtzCmd::move(int directions, int avIndex) {
    SMsgAVIoctrlPtzCmd message;
    message.control = controlFor(directions);
    message.channel = static_cast<uint8_t>(avIndex & 0xFF);
    return message;
}

QByteArray SMsgAVIoctrlPtzCmd::encode() const {
    return Writer().u8(control).u8(speed).reserved(3).u8(channel).reserved(2).result();
}

}  // namespace orvelle
