#pragma once

#include <QMetaType>
#include <QVector>

/// One recorded stretch of time: from `start` (seconds since 1970 UTC) up to but without
/// `start + duration`. A duration of 0 or less covers nothing. A plain value, known to queued
/// connections together with QVector<KvTimeLineMark> as soon as a KvTimeLineView exists.
struct KvTimeLineMark {
    int start = 0;
    int duration = 0;

    /// The first second behind it; may lie past the range of int.
    qint64 end() const { return qint64(start) + duration; }
    bool contains(qint64 time) const { return start <= time && time < end(); }

    /// By start, then by duration.
    friend bool operator<(const KvTimeLineMark& a, const KvTimeLineMark& b) {
        return a.start != b.start ? a.start < b.start : a.duration < b.duration;
    }
    friend bool operator==(const KvTimeLineMark& a, const KvTimeLineMark& b) {
        return a.start == b.start && a.duration == b.duration;
    }
};

Q_DECLARE_TYPEINFO(KvTimeLineMark, Q_PRIMITIVE_TYPE);
Q_DECLARE_METATYPE(KvTimeLineMark)
