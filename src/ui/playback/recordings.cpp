#include "ui/playback/recordings.h"

#include <QDateTime>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "device/device_messages.h"

namespace orvelle {

namespace {

constexpr int kFileSeconds = 60;
/// A camera in another time zone has other edges of the month.
constexpr int kZoneSeconds = 24 * 3600;

QDate firstOfMonth(const QDate& day) {
    return {day.year(), day.month(), 1};
}

qint64 startOf(const QDate& day) {
    return day.startOfDay().toSecsSinceEpoch();
}

bool startsBefore(const KvTimeLineMark& mark, qint64 time) {
    return mark.start < time;
}

auto firstFrom(const QVector<KvTimeLineMark>& marks, qint64 time) {
    return std::lower_bound(marks.cbegin(), marks.cend(), time, startsBefore);
}

}  // namespace

QVector<KvTimeLineMark> recordingsOf(const SMsgAVIoctrlListEventResp_VBK& list) {
    QVector<KvTimeLineMark> found;
    for (const SAvEvent_VBK& run : list.runs) {
        const qint64 end = qint64(run.start) + qint64(run.num) * kFileSeconds;
        if (run.start == 0 || end > std::numeric_limits<int>::max())
            continue;
        for (qint64 start = run.start; start < end && found.size() < Recordings::kMaxMarks;
             start += kFileSeconds)
            found.append({static_cast<int>(start), kFileSeconds});
    }
    return found;
}

bool Recordings::ask(const QDate& month) {
    const QDate first = firstOfMonth(month);
    if (first == m_lastAsked)
        return false;
    m_lastAsked = first;
    m_asked.append(first);
    return true;
}

void Recordings::giveUp() {
    m_asked.clear();
    m_awaitedDay = QDate();
    forgetMonths();
}

Recordings::Span Recordings::spanAskedFor(const QDate& month) {
    return {startOf(month.addMonths(-1)), startOf(month.addMonths(1))};
}

bool Recordings::answer(const QVector<KvTimeLineMark>& list) {
    if (m_asked.isEmpty())
        return false;
    const Span span = spanAskedFor(m_asked.takeFirst());
    QVector<KvTimeLineMark> merged;
    const auto isWithin = [&span](const KvTimeLineMark& mark, int margin) {
        return mark.start >= span.start - margin && mark.start < span.end + margin;
    };
    std::copy_if(m_all.cbegin(), m_all.cend(), std::back_inserter(merged),
                 [&](const KvTimeLineMark& mark) { return !isWithin(mark, 0); });
    std::copy_if(list.cbegin(), list.cend(), std::back_inserter(merged),
                 [&](const KvTimeLineMark& mark) { return isWithin(mark, kZoneSeconds); });
    std::sort(merged.begin(), merged.end());
    merged.erase(std::unique(merged.begin(), merged.end(),
                             [](const auto& a, const auto& b) { return a.start == b.start; }),
                 merged.end());
    m_all = merged;
    limit();
    return true;
}

/// The oldest go: a card overwrites those first, too.
void Recordings::limit() {
    if (m_all.size() > kMaxMarks)
        m_all.remove(0, m_all.size() - kMaxMarks);
}

int Recordings::indexAt(qint64 time) const {
    const auto after = std::upper_bound(
        m_all.cbegin(), m_all.cend(), time,
        [](qint64 moment, const KvTimeLineMark& mark) { return moment < mark.start; });
    if (after == m_all.cbegin() || !std::prev(after)->contains(time))
        return -1;
    return static_cast<int>(std::prev(after) - m_all.cbegin());
}

int Recordings::indexOn(const QDate& day) const {
    const auto first = firstFrom(m_all, startOf(day));
    if (first == m_all.cend() || first->start >= startOf(day.addDays(1)))
        return -1;
    return static_cast<int>(first - m_all.cbegin());
}

bool Recordings::mayCome(const QDate& day) const {
    const QDate month = firstOfMonth(day);
    return m_asked.contains(month) || m_asked.contains(month.addMonths(1));
}

Recordings::Start Recordings::takeStart() {
    const bool isFirst = std::exchange(m_isFirstList, false);
    if (m_awaitedDay.isValid() && !mayCome(m_awaitedDay)) {
        const int index = indexOn(std::exchange(m_awaitedDay, QDate()));
        return {index, index < 0};
    }
    return {isFirst && !m_awaitedDay.isValid() ? m_all.size() - 1 : -1, false};
}

int Recordings::current() const {
    const auto found = firstFrom(m_all, m_currentStart);
    if (m_currentStart < 0 || found == m_all.cend() || found->start != m_currentStart)
        return -1;
    return static_cast<int>(found - m_all.cbegin());
}

const KvTimeLineMark& Recordings::select(int index) {
    m_currentStart = m_all.at(index).start;
    return m_all.at(index);
}

int Recordings::previous() const {
    if (m_currentStart < 0)
        return -1;
    return static_cast<int>(firstFrom(m_all, m_currentStart) - m_all.cbegin()) - 1;
}

int Recordings::next() const {
    if (m_currentStart < 0)
        return -1;
    const auto found = firstFrom(m_all, qint64(m_currentStart) + 1);
    return found == m_all.cend() ? -1 : static_cast<int>(found - m_all.cbegin());
}

bool ClickGuard::accepts(qint64 now) {
    if (m_last >= 0 && now - m_last < kIntervalMs)
        return false;
    m_last = now;
    return true;
}

}  // namespace orvelle
