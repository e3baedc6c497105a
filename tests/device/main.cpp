#include <QCoreApplication>

#include "link/client/link_client.h"
#include "support/data_home.h"
#include "support/suites.h"

int main(int argc, char** argv) {
    const orvelle::test::DataHome home;
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("device_test"));
    orvelle::LinkClient::instance().start(0);
    orvelle::LinkClient::instance().setMaxChannels(32);
    const int failed = orvelle::test::runSuites(argc, argv);
    orvelle::LinkClient::instance().shutDown();
    return failed;
}
