#include "update/update_server.h"

namespace orvelle {

static QString& server() {
    static QString address = QStringLiteral(ORVELLE_UPDATE_SERVER);
    return address;
}

QString updateServer() {
    return server();
}

void setUpdateServer(const QString& address) {
    server() = address;
}

}  // namespace orvelle
