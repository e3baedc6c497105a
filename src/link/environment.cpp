#include "link/environment.h"

#include "link/link_log.h"

#include <QString>
#include <QStringList>

namespace orvelle {

namespace {

constexpr uint16_t kWellKnownDiscoveryPort = 46107;

}  // namespace

bool isLinkLoopbackOnly() {
    return qEnvironmentVariableIntValue("ORVELLE_LINK_LOOPBACK_ONLY") == 1;
}

bool isLinkUnbounded() {
    return qEnvironmentVariableIntValue("ORVELLE_LINK_UNBOUNDED") == 1;
}

uint16_t discoveryPort() {
    const int port = qEnvironmentVariableIntValue("ORVELLE_DISCOVERY_PORT");
    return port > 0 && port <= 65535 ? static_cast<uint16_t>(port) : kWellKnownDiscoveryPort;
}

std::optional<HostAndPort> configuredCameraAddress(const std::string& uid) {
    const QString prefix = QString::fromStdString(uid) + QLatin1Char('=');
    const QStringList entries =
        qEnvironmentVariable("ORVELLE_CAMERA_ADDRESSES").split(QLatin1Char(','));
    for (const QString& entry : entries) {
        const QString trimmed = entry.trimmed();
        if (!trimmed.startsWith(prefix))
            continue;
        const QString address = trimmed.mid(prefix.size());
        const int colon = address.lastIndexOf(QLatin1Char(':'));
        const uint16_t port = colon > 0 ? address.mid(colon + 1).toUShort() : 0;
        if (port != 0)
            return HostAndPort{address.left(colon).toStdString(), port};
        qCWarning(lcLink, "unusable camera address \"%s\"", qUtf8Printable(trimmed));
    }
    return std::nullopt;
}

}  // namespace orvelle
