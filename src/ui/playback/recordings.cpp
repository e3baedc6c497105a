#include "ui/playback/recordings.h"

#include <QDateTime>

#include <algorithm>
#include <limits>
#include <utility>

#include "device/device_messages.h"
#include "ui/playback/time_line_rules.h"

namespace orvelle {

namespace {

constexpr int kFileSeconds = 60;
/// A camera in another time zone has other edges of the month.
constexpr int kZoneSeconds = 24 * 3600;

qint64 startOf(const QDate& day) {
    return day.startOfDay().toSecsSinceEpoch();
}

bool startsBefore(const KvTimeLineMark& mark, qint64 time) {
    return mark.start < time;
}

template <class Marks>
auto firstFrom(Marks& marks, qint64 time) {
    return std::lower_bound(marks.begin(), marks.end(), time, startsBefore);
}

}  // namespace

QVector<KvTimeLineMark> runsOf(const SMsgAVIoctrlListEventResp_VBK& list) {
    QVector<KvTimeLineMark> found;
    for (const SAvEvent_VBK& run : list.runs) {
        const qint64 duration = qint64(run.num) * kFileSeconds;
        if (run.start != 0 && duration > 0 &&
            run.start + duration <= std::numeric_limits<int>::max())
            found.append({static_cast<int>(run.start), static_cast<int>(duration)});
    }
    return found;
}

QVector<KvTimeLineMark> filesOf(const QVector<KvTimeLineMark>& runs, qint64 start, qint64 end) {
    QVector<KvTimeLineMark> files;
    for (const KvTimeLineMark& run : runs) {
        const qint64 skipped = qMax<qint64>(0, start - run.start + kFileSeconds - 1) / kFileSeconds;
        const qint64 last = qMin(end, run.end());
        for (qint64 file = run.start + skipped * kFileSeconds;
             file < last && files.size() < Recordings::kMaxMarks; file += kFileSeconds)
            files.append({static_cast<int>(file), kFileSeconds});
    }
    return files;
}

bool Recordings::ask(const QDate& month) {
    const QDate first = firstOfMonth(month);
    if (first == m_lastAsked)
        return false;
    m_lastAsked = first;
    m_asked.append({first, false});
    return true;
}

bool Recordings::askAgain(const QDate& month, bool isQuiet) {
    const QDate first = firstOfMonth(month);
    for (Request& request : m_asked) {
        if (request.month != first)
            continue;
        request.isQuiet = request.isQuiet && isQuiet;
        return false;
    }
    m_asked.append({first, isQuiet});
    return true;
}

bool Recordings::isAsking() const {
    return std::any_of(m_asked.cbegin(), m_asked.cend(),
                       [](const Request& request) { return !request.isQuiet; });
}

void Recordings::giveUpQuiet() {
    m_asked.erase(std::remove_if(m_asked.begin(), m_asked.end(),
                                 [](const Request& request) { return request.isQuiet; }),
                  m_asked.end());
}

void Recordings::giveUp() {
    m_asked.clear();
    m_awaitedDay = QDate();
    forgetMonths();
}

Recordings::Span Recordings::spanAskedFor(const QDate& month) {
    return {startOf(month.addMonths(-1)), startOf(month.addMonths(1))};
}

bool Recordings::answer(const QVector<KvTimeLineMark>& runs) {
    for (int i = 0; i < m_asked.size(); ++i) {
        const Span span = spanAskedFor(m_asked.at(i).month);
        const auto files = filesOf(runs, span.start - kZoneSeconds, span.end + kZoneSeconds);
        if (files.isEmpty() && !runs.isEmpty())
            continue;
        m_asked.remove(0, i + 1);
        replace(span, files);
        return true;
    }
    return false;
}

void Recordings::replace(const Span& span, const QVector<KvTimeLineMark>& files) {
    m_all.erase(firstFrom(m_all, span.start), firstFrom(m_all, span.end));
    m_all += files;
    std::sort(m_all.begin(), m_all.end());
    m_all.erase(std::unique(m_all.begin(), m_all.end(),
                            [](const auto& a, const auto& b) { return a.start == b.start; }),
                m_all.end());
    limit();
    m_earliestAsked = m_earliestAsked < 0 ? span.start : qMin(m_earliestAsked, span.start);
}

qint64 Recordings::earliest() const {
    const qint64 asked = qMax<qint64>(1, m_earliestAsked);
    return m_all.isEmpty() ? asked : qMin<qint64>(asked, m_all.first().start);
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

int Recordings::indexEndingAfter(qint64 time) const {
    const auto found = firstFrom(m_all, time - kFileSeconds + 1);
    return found == m_all.cend() ? -1 : static_cast<int>(found - m_all.cbegin());
}

int Recordings::indexOn(const QDate& day) const {
    const auto first = firstFrom(m_all, startOf(day));
    if (first == m_all.cend() || first->start >= startOf(day.addDays(1)))
        return -1;
    return static_cast<int>(first - m_all.cbegin());
}

bool Recordings::isAnswerPending(const QDate& day) const {
    const QDate month = firstOfMonth(day);
    return std::any_of(m_asked.cbegin(), m_asked.cend(), [&month](const Request& request) {
        return request.month == month || request.month == month.addMonths(1);
    });
}

Recordings::Start Recordings::takeStart() {
    const bool isFirst = std::exchange(m_isFirstList, false);
    if (m_awaitedDay.isValid() && !isAnswerPending(m_awaitedDay)) {
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

qint64 Recordings::currentEnd() const {
    return m_currentStart < 0 ? 0 : qint64(m_currentStart) + kFileSeconds;
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

}  // namespace orvelle
