#include <QApplication>

#include "link/av.h"
#include "link/client/link_client.h"
#include "link/iotc.h"
#include "media/media_log.h"
#include "support/suites.h"

int main(int argc, char** argv) {
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
#if defined(__SANITIZE_THREAD__)
    // Its event loop wakes threads through calls that this sanitizer cannot see.
    qputenv("QT_NO_GLIB", "1");
#endif
    orvelle::silenceFfmpeg();
    QApplication application(argc, argv);
    if (IOTC_Initialize2(0) < 0 || avInitialize(32) < 0)
        return 1;
    const int failures = orvelle::test::runSuites(argc, argv);
    // SRT's own globals do not outlive main() for long.
    orvelle::LinkClient::instance().shutDown();
    return failures;
}
