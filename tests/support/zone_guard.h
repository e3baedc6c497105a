#pragma once

#include <QByteArray>
#include <QDateTime>

#include <ctime>

namespace orvelle::test {

/// The computer stands in this zone for as long as it lives.
class ZoneGuard {
public:
    explicit ZoneGuard(const QByteArray& zone) : m_before(qgetenv("TZ")) { set(zone); }
    ~ZoneGuard() { set(m_before); }
    Q_DISABLE_COPY(ZoneGuard)

    /// False where a process has no zone of its own, or not by these names; a test skips then.
    static bool isPossible() {
        const ZoneGuard guard("Europe/Berlin");
        return QDate(2024, 1, 1).startOfDay().offsetFromUtc() == 3600 &&
               QDate(2024, 7, 1).startOfDay().offsetFromUtc() == 7200;
    }

private:
    static void set(const QByteArray& zone) {
        zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
        tzset();
    }

    const QByteArray m_before;
};

}  // namespace orvelle::test
