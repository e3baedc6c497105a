#include "render/drawing.h"

#include <QLoggingCategory>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <cstring>
#include <optional>

#include "platform/graphics.h"

namespace orvelle {
namespace {

/// The toolkit's own, on X11.
constexpr char kIntegration[] = "QT_XCB_GL_INTEGRATION";

Q_LOGGING_CATEGORY(lcDrawing, "orvelle.render")

std::optional<Drawing> drawingAsked() {
    const QByteArray asked = qgetenv("ORVELLE_DRAWING").toLower();
    if (asked == "opengl")
        return Drawing::kOpenGl;
    if (asked == "raster")
        return Drawing::kRaster;
    return std::nullopt;
}

/// As far as can be told without OpenGL; false says nothing.
bool isSurelyRaster() {
    const std::optional<Drawing> asked = drawingAsked();
    return asked ? *asked == Drawing::kRaster : !mayHaveGraphicsCard();
}

/// The renderer of this machine's OpenGL; empty when there is none that would do.
QByteArray rendererName() {
    QOpenGLContext context;
    QOffscreenSurface surface;
    if (!context.create())
        return {};
    surface.setFormat(context.format());
    surface.create();
    if (!context.makeCurrent(&surface))
        return {};
    QOpenGLFunctions* gl = context.functions();
    const bool hasShaders = gl->hasOpenGLFeature(QOpenGLFunctions::Shaders);
    const QByteArray name = reinterpret_cast<const char*>(gl->glGetString(GL_RENDERER));
    context.doneCurrent();
    return hasShaders ? name : QByteArray();
}

Drawing findOut() {
    if (const std::optional<Drawing> asked = drawingAsked())
        return *asked;
    if (!mayHaveGraphicsCard())
        return Drawing::kRaster;
    const QByteArray name = rendererName();
    const bool isReal = !name.isEmpty() && !isSoftwareRenderer(name.constData());
    qCInfo(lcDrawing, "OpenGL renderer \"%s\": pictures are drawn by %s", name.constData(),
           isReal ? "it" : "the processor");
    return isReal ? Drawing::kOpenGl : Drawing::kRaster;
}

}  // namespace

Drawing drawing() {
    static const Drawing s_drawing = findOut();
    return s_drawing;
}

void spareOpenGl() {
    if (isSurelyRaster() && !qEnvironmentVariableIsSet(kIntegration))
        qputenv(kIntegration, "none");
}

bool isSoftwareRenderer(const char* name) {
    const QByteArray lower = QByteArray(name).toLower();
    for (const char* known :
         {"llvmpipe", "softpipe", "swrast", "software rasterizer", "swiftshader", "openswr",
          "gdi generic", "microsoft basic render", "warp"}) {
        if (lower.contains(known))
            return true;
    }
    return false;
}

}  // namespace orvelle
