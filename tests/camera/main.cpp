#include <QCoreApplication>

#include "support/suites.h"

extern "C" {
#include <libavutil/log.h>
}

int main(int argc, char** argv) {
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    av_log_set_level(AV_LOG_QUIET);
    QCoreApplication app(argc, argv);
    return orvelle::test::runSuites(argc, argv);
}
