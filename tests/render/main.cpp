#include <QApplication>
#include <QOpenGLContext>

#include "support/keep_libraries.h"
#include "support/suites.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    // The driver's own threads live while somebody has a context, and some for a while longer: with
    // one of the whole run they are there from the start.
    QOpenGLContext context;
    if (!context.create())
        qWarning("no OpenGL: the views that draw by it are not tested");
    return orvelle::test::runSuites(argc, argv);
}
