#pragma once

namespace orvelle {

/// What pictures are drawn with.
enum class Drawing {
    kOpenGl,  ///< a graphics card
    kRaster,  ///< the processor: where OpenGL is missing or would be computed by it anyway
};

/// What suits this machine, found out at the first call, which takes a context of OpenGL where a
/// graphics card may be; so it is to be asked when there is something to draw, not before. The
/// environment's ORVELLE_DRAWING ("opengl" or "raster") has the last word. Interface thread.
Drawing drawing();

/// Keeps the toolkit from loading OpenGL, which it would for any window, where it is sure not to be
/// used. Before the application object is made.
void spareOpenGl();

/// Whether an OpenGL renderer of this name computes on the processor.
bool isSoftwareRenderer(const char* name);

}  // namespace orvelle
