#pragma once

#include <QDate>

#include <optional>
#include <vector>

#include "ui/playback/time_line_mark.h"

/// What the timeline and the calendar compute, without a widget. All times are seconds since
/// 1970 UTC; local time is that of the computer, with the offset of the moment in question. No
/// value, however absurd, overflows or takes long.
namespace orvelle {

/// From `start` up to but without `end`.
struct TimeSpan {
    qint64 start = 0;
    qint64 end = 0;
};

/// In order, neither overlapping nor touching.
using TimeSpans = std::vector<TimeSpan>;

/// What the marks cover together. Marks that cover nothing are left out, and so is what lies
/// before 1970.
TimeSpans spansOf(QVector<KvTimeLineMark> marks);

/// The first span that ends behind `time`.
TimeSpans::const_iterator spanEndingAfter(const TimeSpans& spans, qint64 time);

bool covers(const TimeSpans& spans, qint64 time);

/// Where a chosen moment leads: itself where something was recorded, else to the beginning of the
/// next recording; nothing behind the last one.
std::optional<int> snapped(const TimeSpans& spans, int time);

/// For each of `days` local days from `first`, whether something was recorded on it.
std::vector<bool> recordedDays(const TimeSpans& spans, const QDate& first, int days);

QDate firstOfMonth(const QDate& date);

/// Limits below 1 are none; the maximum wins.
int limited(qint64 time, int minimum, int maximum);

constexpr int kTimeLevels = 5;

/// Level 0 is the finest. Out of range counts as the nearest.
int secondsPerStepOf(int level, int stepsPerMajor);
int levelOf(int secondsPerStep, int stepsPerMajor);

/// How a band of `width` pixels shows time, with `value` under its middle.
struct TimeScale {
    static constexpr int kMaxPixelsPerStep = 10000;

    int width = 0;
    int value = 0;
    int pixelsPerStep = 15;
    int secondsPerStep = 12;

    int middle() const { return width / 2; }
    qint64 xOf(qint64 time) const;
    qint64 timeAt(qint64 x) const;
    /// What `pixels` to the right of a place are in time.
    qint64 secondsOf(qint64 pixels) const;
    /// The value with which `time` stands at `x`.
    qint64 valueFor(qint64 time, qint64 x) const;
};

/// A division of the band. `localTime` counts like `time`, but by the local clock, so that its
/// multiples of a day are midnights.
struct TimeTick {
    qint64 time = 0;
    qint64 localTime = 0;
    bool isMajor = false;
};

/// The ticks of the band, at round local times; where the clock is changed they are round on both
/// sides. Up to the last major tick before the value the minimum holds, behind it the maximum, and
/// there 0 means none at all.
std::vector<TimeTick> visibleTicks(const TimeScale& scale, int stepsPerMajor, int minimum,
                                   int maximum);

/// "HH:mm", with the day in front at midnight.
QString tickLabel(const TimeTick& tick);

}  // namespace orvelle
