#include "update/update_server.h"

namespace orvelle {

static QString& server() {
    static QString address = QStringLiteral(ORVELLE_UPDATE_SERVER);
    return address;
}

static std::optional<MinisignKey>& key() {
    static std::optional<MinisignKey> trusted =
        MinisignKey::fromBase64(QByteArrayLiteral(ORVELLE_UPDATE_KEY));
    return trusted;
}

QString updateServer() {
    return server();
}

std::optional<MinisignKey> updateKey() {
    return key();
}

void setUpdateServer(const QString& address, const QByteArray& keyText) {
    server() = address;
    key() = MinisignKey::fromBase64(keyText);
}

}  // namespace orvelle
