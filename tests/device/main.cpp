#include <QCoreApplication>
#include <QTemporaryDir>

#include "link/client/link_client.h"
#include "support/suites.h"

int main(int argc, char** argv) {
    const QTemporaryDir home;
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.path()));
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("device_test"));
    orvelle::LinkClient::instance().start(0);
    orvelle::LinkClient::instance().setMaxChannels(32);
    const int failed = orvelle::test::runSuites(argc, argv);
    orvelle::LinkClient::instance().shutDown();
    return failed;
}
