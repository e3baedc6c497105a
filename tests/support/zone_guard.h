#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <ctime>

namespace orvelle::test {

/// The computer stands in this zone for as long as it lives.
class ZoneGuard {
public:
    explicit ZoneGuard(const QByteArray& zone) : m_before(qgetenv("TZ")) { set(zone); }
    ~ZoneGuard() { set(m_before); }
    Q_DISABLE_COPY(ZoneGuard)

private:
    static void set(const QByteArray& zone) {
        zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
        tzset();
    }

    const QByteArray m_before;
};

}  // namespace orvelle::test
