#pragma once

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QString>
#include <QTime>
#include <QVector>

#include <cstdint>
#include <optional>

#include "link/io_types.h"

/// Payloads of the control messages of link/io_types.h, to and from little-endian bytes.
///
/// Requests without fields of their own, among them those that start and stop picture and
/// sound (their channel is always 0), are KvTUTKDevice::sendIOCtrl(type): eight zero bytes.
/// encode() gives exactly the size that the camera expects. decode() reads only what was
/// received: a number beyond the end is empty, a text beyond the end is empty or cut short.
namespace orvelle {

/// A calendar time in the camera's clock, 8 bytes.
struct STimeDay {
    uint16_t year = 0;
    uint8_t month = 0;
    uint8_t day = 0;
    uint8_t wday = 0;  ///< 1 = Monday ... 7 = Sunday
    uint8_t hour = 0;
    uint8_t minute = 0;
    uint8_t second = 0;

    static STimeDay from(const QDate& date, const QTime& time);
    QByteArray encode() const;
};

/// 0x031A, 24 bytes.
struct SMsgAVIoctrlPlayRecord {
    enum Command : uint32_t { kStop = 1, kEnd = 7, kStart = 16 };

    uint32_t channel = 0;
    uint32_t command = kStop;
    uint32_t param = 0;
    STimeDay sTimeDay;

    static SMsgAVIoctrlPlayRecord start(const STimeDay& from);
    static SMsgAVIoctrlPlayRecord stop() { return {}; }
    QByteArray encode() const;
};

/// 0x031B. For a start, `result` is the AV channel of the recording, negative when refused.
struct SMsgAVIoctrlPlayRecordResp {
    std::optional<uint32_t> command;
    std::optional<int32_t> result;

    static SMsgAVIoctrlPlayRecordResp decode(const QByteArray& payload);
};

/// 0x0670, 16 bytes: how many frames, and bytes of them, the client of a playback has room for,
/// counted from the first one on.
struct PlaybackRoom {
    uint32_t channel = 0;
    uint32_t frames = 0;
    uint64_t bytes = 0;

    QByteArray encode() const;
};

/// 0x0323.
struct StreamQualityReply {
    std::optional<uint8_t> quality;

    static StreamQualityReply decode(const QByteArray& payload);
};

/// 0x0331, 56 bytes.
struct SMsgAVIoctrlDeviceInfoResp {
    QString model;
    std::optional<uint32_t> version;
    std::optional<uint32_t> totalMiB;  ///< of the memory card; 0 without one
    std::optional<uint32_t> freeMiB;

    static SMsgAVIoctrlDeviceInfoResp decode(const QByteArray& payload);
};

/// 0x0345.
struct SMsgAVIoctrlGetWifiResp_vbk {
    QString ssid;
    QString ip;
    QString mac;

    static SMsgAVIoctrlGetWifiResp_vbk decode(const QByteArray& payload);
};

/// 0x0380, 8 bytes. Storage 0 is the memory card.
struct FormatStorageRequest {
    uint32_t storage = 0;

    QByteArray encode() const;
};

/// 0x0381. A result of 0 means formatted.
struct SMsgAVIoctrlFormatExtStorageResp {
    std::optional<uint32_t> storage;
    std::optional<uint8_t> result;

    static SMsgAVIoctrlFormatExtStorageResp decode(const QByteArray& payload);
};

/// 0x03A1.
struct TimeZoneReply {
    std::optional<int32_t> timeBase;

    static TimeZoneReply decode(const QByteArray& payload);
};

/// 0x0660, 24 bytes.
struct SMsgAVIoctrlListEventReq {
    uint32_t channel = 0;
    STimeDay start;
    STimeDay end;
    uint8_t event = 0x11;
    uint8_t status = 1;

    /// From the first day of the month before to the last day of the month of `day`.
    static SMsgAVIoctrlListEventReq forMonth(const QDate& day);
    /// Both in the camera's clock, the end included.
    static SMsgAVIoctrlListEventReq between(const QDateTime& first, const QDateTime& last);
    QByteArray encode() const;
};

/// `num` recordings of one minute each, the first at `start` (seconds since 1970 UTC).
struct SAvEvent_VBK {
    uint32_t start = 0;
    uint32_t num = 0;  ///< at most kMaxRunMinutes
};

/// 0x0661. Holds the runs that arrived whole, whatever their announced count.
struct SMsgAVIoctrlListEventResp_VBK {
    /// The two months that one request spans; no camera's claim makes more marks of one run.
    static constexpr uint32_t kMaxRunMinutes = 62 * 24 * 60;

    uint8_t count = 0;  ///< as announced
    uint8_t misscard = 0;
    QVector<SAvEvent_VBK> runs;

    static SMsgAVIoctrlListEventResp_VBK decode(const QByteArray& payload);
};

/// 0x7001: a memory card at a glance.
struct CardOverviewReply {
    bool isMissing = false;
    bool isReadOnly = false;
    bool isFull = false;
    bool canDownload = false;  ///< the camera knows IOTYPE_CARD_DOWNLOAD
    uint32_t oldestSec = 0;    ///< start of a recording, seconds since 1970 UTC; 0 without any
    uint32_t newestSec = 0;
    QVector<QDate> months;  ///< the first of each month of the camera's clock that holds any

    /// Empty for a payload that is cut or tells an absurd month.
    static std::optional<CardOverviewReply> decode(const QByteArray& payload);
};

/// 0x0681.
struct DeviceTypeReply {
    std::optional<int32_t> type;

    static DeviceTypeReply decode(const QByteArray& payload);
};

/// 0x1001, 8 bytes.
struct SMsgAVIoctrlPtzCmd {
    enum Direction { kNone = 0, kUp = 1, kLeft = 2, kDown = 4, kRight = 8 };

    uint8_t control = 0;
    uint8_t speed = 1;
    uint8_t channel = 0;

    /// Movement code of a set of directions; contradictory ones stop (0).
    static uint8_t controlFor(int directions);
    static SMsgAVIoctrlPtzCmd move(int directions, int avIndex);
    QByteArray encode() const;
};

}  // namespace orvelle
