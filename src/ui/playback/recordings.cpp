#include "ui/playback/recordings.h"

#include <QDateTime>

#include <algorithm>
#include <limits>
#include <utility>

#include "device/device_messages.h"

namespace orvelle {

namespace {

constexpr int kFileSeconds = 60;
/// A camera in another time zone has other edges of the month.
constexpr int kZoneSeconds = 24 * 3600;
/// Two years without a recording: of a camera that does not tell its oldest one, no more is asked.
constexpr int kMaxEmptyAnswers = 12;

qint64 startOf(const QDate& day) {
    return day.startOfDay().toSecsSinceEpoch();
}

/// Of the month and the one before, in local time.
TimeSpan spanAskedFor(const QDate& firstOfMonth) {
    return {startOf(firstOfMonth.addMonths(-1)), startOf(firstOfMonth.addMonths(1))};
}

bool startsBefore(const KvTimeLineMark& mark, qint64 time) {
    return mark.start < time;
}

bool isEarlier(const KvTimeLineMark& a, const KvTimeLineMark& b) {
    return a.start < b.start;
}

template <class Marks>
auto firstFrom(Marks& marks, qint64 time) {
    return std::lower_bound(marks.begin(), marks.end(), time, startsBefore);
}

QDate dayOf(qint64 time) {
    return QDateTime::fromSecsSinceEpoch(time).date();
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
             file < last && files.size() < Recordings::kMaxAnswerMarks; file += kFileSeconds)
            files.append({static_cast<int>(file), kFileSeconds});
    }
    return files;
}

bool Recordings::ask(const QDate& month) {
    const QDate first = firstOfMonth(month);
    if (first == m_lastAsked)
        return false;
    m_lastAsked = first;
    add(spanAskedFor(first), false);
    return true;
}

bool Recordings::askAgain(const QDate& month, bool isQuiet) {
    const TimeSpan span = spanAskedFor(firstOfMonth(month));
    for (Request& request : m_asked) {
        if (request.span.end != span.end)
            continue;
        request.isQuiet = request.isQuiet && isQuiet;
        return false;
    }
    add(span, isQuiet);
    return true;
}

void Recordings::add(const TimeSpan& span, bool isQuiet) {
    m_asked.append({span, isQuiet});
}

std::optional<TimeSpan> Recordings::askRest() {
    if (!m_rest)
        return std::nullopt;
    const Request rest = *std::exchange(m_rest, std::nullopt);
    add(rest.span, rest.isQuiet);
    return rest.span;
}

bool Recordings::isAsking() const {
    const bool isSearching = m_wish != Wish::kNone && m_wish != Wish::kNewest;
    return isSearching || std::any_of(m_asked.cbegin(), m_asked.cend(),
                                      [](const Request& request) { return !request.isQuiet; });
}

void Recordings::forgetMonths() {
    m_lastAsked = QDate();
    m_known.clear();
    m_rest.reset();
}

void Recordings::giveUpQuiet() {
    m_asked.erase(std::remove_if(m_asked.begin(), m_asked.end(),
                                 [](const Request& request) { return request.isQuiet; }),
                  m_asked.end());
}

void Recordings::giveUp() {
    m_asked.clear();
    m_rest.reset();
    m_lastAsked = QDate();
    if (m_wish != Wish::kNewest)
        m_wish = Wish::kNone;
}

bool Recordings::answer(const QVector<KvTimeLineMark>& runs, qint64 latest) {
    for (int i = 0; i < m_asked.size(); ++i) {
        const TimeSpan span = m_asked.at(i).span;
        auto files =
            filesOf(runs, span.start - kZoneSeconds, qMin(latest + 1, span.end + kZoneSeconds));
        if (files.isEmpty() && !runs.isEmpty() && runs.first().start <= latest)
            continue;
        m_asked.remove(0, i + 1);
        std::sort(files.begin(), files.end());
        // Where a full answer brings nothing new, the next one would not either.
        const bool isFull =
            runs.size() >= kFullAnswer && !files.isEmpty() && files.first().start < span.end - 1;
        const TimeSpan told{isFull ? qMax<qint64>(span.start, files.first().start) : span.start,
                            span.end};
        m_emptyAnswers = files.isEmpty() ? m_emptyAnswers + 1 : 0;
        replace(told, std::move(files));
        setKnown(told);
        const qint64 end = knownSince(told.start);
        if (end > span.start)
            m_rest = Request{{span.start, end}, true};
        return true;
    }
    return false;
}

void Recordings::replace(const TimeSpan& span, QVector<KvTimeLineMark> files) {
    m_all.erase(firstFrom(m_all, span.start), firstFrom(m_all, span.end));
    files.erase(std::unique(files.begin(), files.end(),
                            [](const auto& a, const auto& b) { return a.start == b.start; }),
                files.end());
    QVector<KvTimeLineMark> merged;
    merged.reserve(m_all.size() + files.size());
    std::set_union(m_all.cbegin(), m_all.cend(), files.cbegin(), files.cend(),
                   std::back_inserter(merged), isEarlier);
    m_all.swap(merged);
    // The oldest go: a card overwrites those first, too.
    if (m_all.size() > kMaxMarks)
        m_all.remove(0, m_all.size() - kMaxMarks);
}

void Recordings::setKnown(const TimeSpan& span) {
    TimeSpan joined = span;
    TimeSpans known;
    for (const TimeSpan& each : m_known) {
        if (each.end < joined.start || each.start > joined.end) {
            known.push_back(each);
        } else {
            joined.start = std::min(joined.start, each.start);
            joined.end = std::max(joined.end, each.end);
        }
    }
    const auto place = std::find_if(known.begin(), known.end(), [&joined](const TimeSpan& each) {
        return each.start > joined.start;
    });
    known.insert(place, joined);
    m_known.swap(known);
}

void Recordings::noteOldest(qint64 start) {
    m_oldest = start;
    if (start > 0)
        m_all.erase(m_all.begin(), firstFrom(m_all, start));
}

/// Since when all is known without a gap up to `time`; that itself where the time before it is
/// unknown.
qint64 Recordings::knownSince(qint64 time) const {
    for (const TimeSpan& span : m_known)
        if (span.start < time && time <= span.end)
            return span.start;
    return time;
}

qint64 Recordings::knownUntil(qint64 time) const {
    for (const TimeSpan& span : m_known)
        if (span.start <= time && time < span.end)
            return span.end;
    return time;
}

bool Recordings::knows(qint64 time) const {
    return knownUntil(time) > time || (m_oldest > 0 && time < m_oldest);
}

bool Recordings::knows(const QDate& day) const {
    return unknown({startOf(day), startOf(day.addDays(1))}).empty();
}

TimeSpans Recordings::unknown(const TimeSpan& span) const {
    TimeSpans gaps;
    qint64 time = std::max(span.start, m_oldest);
    for (const TimeSpan& known : m_known) {
        if (known.end <= time)
            continue;
        if (known.start >= span.end)
            break;
        if (known.start > time)
            gaps.push_back({time, known.start});
        time = known.end;
    }
    if (time < span.end)
        gaps.push_back({time, span.end});
    return gaps;
}

qint64 Recordings::earliest() const {
    const qint64 known = m_known.empty() ? 1 : std::max<qint64>(1, m_known.front().start);
    const qint64 first = m_all.isEmpty() ? known : std::min<qint64>(known, m_all.first().start);
    return m_oldest > 0 ? std::min(m_oldest, first) : first;
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

QVector<KvTimeLineMark> Recordings::runsWithin(const TimeSpan& span) const {
    QVector<KvTimeLineMark> runs;
    for (int i = indexEndingAfter(span.start); i >= 0 && i < m_all.size(); ++i) {
        const KvTimeLineMark& file = m_all.at(i);
        if (file.start >= span.end)
            break;
        if (!runs.isEmpty() && runs.last().end() == file.start)
            runs.last().duration += file.duration;
        else
            runs.append(file);
    }
    return runs;
}

/// -1 as well when an unknown one may lie between.
int Recordings::olderThan(qint64 time) const {
    const int index = static_cast<int>(firstFrom(m_all, time) - m_all.cbegin()) - 1;
    return index >= 0 && m_all.at(index).start >= knownSince(time) ? index : -1;
}

int Recordings::newerThan(qint64 time) const {
    const int index = indexEndingAfter(time);
    if (index < 0)
        return -1;
    const qint64 start = m_all.at(index).start;
    return start <= time || start < knownUntil(time) ? index : -1;
}

bool Recordings::isOlderPossible(qint64 time) const {
    const qint64 since = knownSince(time);
    return m_oldest > 0 ? since > m_oldest : m_emptyAnswers < kMaxEmptyAnswers && since > 0;
}

void Recordings::wish(Wish wish, qint64 time) {
    m_wish = wish;
    m_wishTime = time;
    m_emptyAnswers = 0;
}

void Recordings::wishDay(const QDate& day) {
    m_wish = Wish::kDay;
    m_wishDay = day;
}

void Recordings::dropSearch() {
    if (m_wish != Wish::kNewest && m_wish != Wish::kDay)
        m_wish = Wish::kNone;
}

QDate Recordings::monthForWish() const {
    if (isPending() || isRestDue())
        return {};
    switch (m_wish) {
        case Wish::kDay:
            return knows(m_wishDay) ? QDate() : firstOfMonth(m_wishDay);
        case Wish::kMoment:
            return knows(m_wishTime) ? QDate() : firstOfMonth(dayOf(m_wishTime));
        case Wish::kOlder:
            if (olderThan(m_wishTime) < 0 && isOlderPossible(m_wishTime))
                return firstOfMonth(dayOf(knownSince(m_wishTime) - 1));
            return {};
        case Wish::kNewer:
            // What is newer than all that is known is for the caller to ask again.
            if (newerThan(m_wishTime) < 0 && indexEndingAfter(m_wishTime) >= 0)
                return firstOfMonth(dayOf(knownUntil(m_wishTime))).addMonths(1);
            return {};
        case Wish::kNewest:
        case Wish::kNone:
            break;
    }
    return {};
}

Recordings::Start Recordings::found(int index, qint64 from) {
    return {std::exchange(m_wish, Wish::kNone), index, from};
}

Recordings::Start Recordings::takeStart() {
    const bool isSettled = !isPending() && !isRestDue() && !monthForWish().isValid();
    switch (m_wish) {
        case Wish::kNewest:
            return found(m_all.size() - 1, 0);
        case Wish::kDay:
            return knows(m_wishDay) ? found(indexOn(m_wishDay), 0) : Start();
        case Wish::kMoment:
            return knows(m_wishTime) ? found(newerThan(m_wishTime), m_wishTime) : Start();
        case Wish::kOlder:
            if (const int index = olderThan(m_wishTime); index >= 0)
                return found(index, 0);
            return isSettled ? found(-1, 0) : Start();
        case Wish::kNewer:
            if (const int index = newerThan(m_wishTime); index >= 0)
                return found(index, m_wishTime);
            return isSettled ? found(-1, 0) : Start();
        case Wish::kNone:
            break;
    }
    return {};
}

int Recordings::current() const {
    const auto found = firstFrom(m_all, m_currentStart);
    if (m_currentStart < 0 || found == m_all.cend() || found->start != m_currentStart)
        return -1;
    return static_cast<int>(found - m_all.cbegin());
}

void Recordings::follow(qint64 time) {
    const bool isCurrent = m_currentStart >= 0 && time >= m_currentStart &&
                           time < qint64(m_currentStart) + kFileSeconds;
    if (isCurrent)
        return;
    if (const int index = indexAt(time); index >= 0)
        select(index);
}

const KvTimeLineMark& Recordings::select(int index) {
    m_currentStart = m_all.at(index).start;
    return m_all.at(index);
}

qint64 Recordings::currentEnd() const {
    return m_currentStart < 0 ? 0 : qint64(m_currentStart) + kFileSeconds;
}

int Recordings::previous() const {
    return m_currentStart < 0 ? -1 : olderThan(m_currentStart);
}

int Recordings::next() const {
    return m_currentStart < 0 ? -1 : newerThan(currentEnd());
}

}  // namespace orvelle
