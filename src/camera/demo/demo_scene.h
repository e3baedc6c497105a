#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "camera/demo/pan_tilt.h"
#include "frames/ffmpeg_ptr.h"

namespace orvelle {

/// The moments that a demo picture shows.
struct SceneTime {
    int64_t sceneUs = 0;     ///< moves what moves
    int64_t localDayUs = 0;  ///< since midnight; the readable clock
    uint64_t stamp = 0;      ///< the picture clock
};

/// A moving street scene that can be watched by eye and by machine: a panorama, drawn once,
/// through which pan and tilt move the view; cars and a balloon that move with time; a
/// readable clock above a bar that fills once a second, a label, and the picture clock across
/// the top. A grain as of a camera's sensor makes the encoder spend the bits it is given. Costs
/// about a millisecond a picture. One thread.
class DemoScene {
public:
    /// `variant` picks colours and skyline, so that several demo cameras differ.
    DemoScene(int width, int height, int variant, std::string label);

    bool isNull() const { return !m_panorama; }  ///< out of memory
    /// `picture` is writable, planar 4:2:0 and of the scene's size.
    void draw(AVFrame* picture, const SceneTime& time, const PanTilt::Position& view) const;

private:
    struct Offset {
        int left, top;
    };

    void paintSky();
    void paintSkyline();
    void paintBuilding(int left, int width, int height, uint32_t windows);
    void paintStreet();
    Offset offsetOf(const PanTilt::Position& view) const;
    void copyView(AVFrame* picture, Offset offset) const;
    void drawMovers(AVFrame* picture, double seconds, Offset offset) const;
    void drawCar(AVFrame* picture, int index, double seconds, Offset offset) const;
    void addGrain(AVFrame* picture, int64_t sceneUs) const;
    void drawTexts(AVFrame* picture, int64_t localDayUs) const;

    const int m_width;
    const int m_height;
    const int m_variant;
    const std::string m_label;
    FramePtr m_panorama;           ///< fixed after construction
    std::vector<uint8_t> m_grain;  ///< noise, longer than a row
};

}  // namespace orvelle
