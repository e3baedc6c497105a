#include <QApplication>
#include <QThreadPool>

#include "core/language.h"
#include "support/data_home.h"
#include "support/keep_libraries.h"
#include "support/suites.h"
#include "ui/widgets/focus_ring.h"

int main(int argc, char** argv) {
    const orvelle::test::DataHome home;
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("ui_test"));
    // A dialog that closes is not the end of the program.
    QApplication::setQuitOnLastWindowClosed(false);
    // Scaling pictures leaves threads that idle for half a minute otherwise.
    QThreadPool::globalInstance()->setExpiryTimeout(100);
    Q_INIT_RESOURCE(orvelle);
    KvLanguage::setRoot(QStringLiteral(ORVELLE_LANGUAGE_DIR));
    KvLanguage::load(QStringLiteral("english"));
    orvelle::FocusRing::install();
    return orvelle::test::runSuites(argc, argv);
}
