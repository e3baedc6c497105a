#include "ui/playback/time_line_rules.h"

#include <QDateTime>

#include <algorithm>
#include <array>
#include <limits>

namespace orvelle {

namespace {

constexpr qint64 kDay = 86400;
constexpr qint64 kEarliest = std::numeric_limits<int>::min();
constexpr qint64 kLatest = std::numeric_limits<int>::max();
constexpr std::array<int, kTimeLevels> kMajorSeconds{60, 600, 3600, 21600, 86400};
// No zone changes its clock twice in so short a time; far-out scales are probed more coarsely.
constexpr qint64 kProbe = 7 * kDay;
constexpr qint64 kMaxProbes = 256;

/// For a positive divisor.
qint64 dividedUp(qint64 number, qint64 divisor) {
    return number / divisor + (number % divisor > 0 ? 1 : 0);
}

qint64 dividedDown(qint64 number, qint64 divisor) {
    return -dividedUp(-number, divisor);
}

qint64 offsetAt(qint64 time) {
    return QDateTime::fromSecsSinceEpoch(time).offsetFromUtc();
}

/// The first moment in (from, to] with another offset than `from`; the two ends differ.
qint64 changeBetween(qint64 from, qint64 to) {
    const qint64 offset = offsetAt(from);
    while (to - from > 1) {
        const qint64 middle = from + (to - from) / 2;
        (offsetAt(middle) == offset ? from : to) = middle;
    }
    return to;
}

/// Up to where the offset stays as it is at `from`, at most `to`.
qint64 endOfOffset(qint64 from, qint64 to) {
    const qint64 stride = std::max(kProbe, (to - from) / kMaxProbes);
    for (qint64 begin = from; begin < to;) {
        const qint64 end = std::min(to, begin + stride);
        if (offsetAt(end) != offsetAt(from))
            return changeBetween(begin, end);
        begin = end;
    }
    return to;
}

qint64 lastMajorBefore(qint64 time, qint64 major) {
    const qint64 offset = offsetAt(time);
    return dividedDown(time + offset, major) * major - offset;
}

}  // namespace

TimeSpans spansOf(QVector<KvTimeLineMark> marks) {
    if (!std::is_sorted(marks.cbegin(), marks.cend()))
        std::sort(marks.begin(), marks.end());
    TimeSpans spans;
    for (const KvTimeLineMark& mark : qAsConst(marks)) {
        const TimeSpan span{std::max(mark.start, 0), mark.end()};
        if (mark.duration <= 0 || span.end <= span.start)
            continue;
        if (spans.empty() || spans.back().end < span.start)
            spans.push_back(span);
        else
            spans.back().end = std::max(spans.back().end, span.end);
    }
    return spans;
}

TimeSpans::const_iterator spanEndingAfter(const TimeSpans& spans, qint64 time) {
    return std::upper_bound(spans.begin(), spans.end(), time,
                            [](qint64 moment, const TimeSpan& span) { return moment < span.end; });
}

bool covers(const TimeSpans& spans, qint64 time) {
    const auto span = spanEndingAfter(spans, time);
    return span != spans.end() && span->start <= time;
}

std::optional<int> snapped(const TimeSpans& spans, int time) {
    const auto span = spanEndingAfter(spans, time);
    if (span == spans.end())
        return std::nullopt;
    return static_cast<int>(std::max<qint64>(time, span->start));
}

std::vector<bool> recordedDays(const TimeSpans& spans, const QDate& first, int days) {
    std::vector<bool> recorded;
    qint64 begin = first.startOfDay().toSecsSinceEpoch();
    for (int day = 0; day < days; ++day) {
        // A day that the clock is changed on has more or less than 24 hours.
        const qint64 end = first.addDays(day + 1).startOfDay().toSecsSinceEpoch();
        const auto span = spanEndingAfter(spans, begin);
        recorded.push_back(span != spans.end() && span->start < end);
        begin = end;
    }
    return recorded;
}

QDate firstOfMonth(const QDate& date) {
    return {date.year(), date.month(), 1};
}

int limited(qint64 time, int minimum, int maximum) {
    if (minimum >= 1)
        time = std::max<qint64>(time, minimum);
    if (maximum >= 1)
        time = std::min<qint64>(time, maximum);
    return static_cast<int>(std::clamp(time, kEarliest, kLatest));
}

int secondsPerStepOf(int level, int stepsPerMajor) {
    const int seconds = kMajorSeconds.at(std::clamp(level, 0, kTimeLevels - 1));
    return std::max(1, seconds / std::max(1, stepsPerMajor));
}

int levelOf(int secondsPerStep, int stepsPerMajor) {
    int level = kTimeLevels - 1;
    while (level > 0 && secondsPerStepOf(level, stepsPerMajor) > secondsPerStep)
        --level;
    return level;
}

// Rounded towards later, so that a tick and a mark of one moment share their pixel everywhere.
qint64 TimeScale::xOf(qint64 time) const {
    return middle() + dividedUp((time - value) * pixelsPerStep, secondsPerStep);
}

qint64 TimeScale::timeAt(qint64 x) const {
    return value + secondsOf(x - middle());
}

qint64 TimeScale::secondsOf(qint64 pixels) const {
    return pixels * secondsPerStep / pixelsPerStep;
}

qint64 TimeScale::valueFor(qint64 time, qint64 x) const {
    return time - secondsOf(x - middle());
}

std::vector<TimeTick> visibleTicks(const TimeScale& scale, int stepsPerMajor, int minimum,
                                   int maximum) {
    const qint64 step = scale.secondsPerStep;
    const qint64 major = step * stepsPerMajor;
    const qint64 turn = lastMajorBefore(scale.value, major);
    const qint64 first = std::max(kEarliest, scale.timeAt(0) - 1);
    const qint64 last = std::min(kLatest, scale.timeAt(scale.width) + 1);
    std::vector<TimeTick> ticks;
    for (qint64 begin = first; begin < last;) {
        const qint64 end = endOfOffset(begin, last);
        const qint64 offset = offsetAt(begin);
        for (qint64 local = dividedUp(begin + offset, step) * step; local - offset < end;
             local += step) {
            const qint64 time = local - offset;
            if (time <= turn ? time >= minimum : time <= maximum)
                ticks.push_back({time, local, local % major == 0});
        }
        begin = end;
    }
    return ticks;
}

QString tickLabel(const TimeTick& tick) {
    // Local time already, so no zone may be applied again.
    const QDateTime local = QDateTime::fromSecsSinceEpoch(tick.localTime, Qt::UTC);
    return local.toString(tick.localTime % kDay == 0 ? QStringLiteral("MM/dd HH:mm")
                                                     : QStringLiteral("HH:mm"));
}

}  // namespace orvelle
