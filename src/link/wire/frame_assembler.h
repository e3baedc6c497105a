#pragma once

#include "link/wire/wire.h"

#include <vector>

namespace orvelle {

/// A frame as it left the camera.
struct LinkFrame {
    uint32_t number = 0;
    FrameInfoBytes info{};
    std::vector<uint8_t> data;

    bool isKey() const { return info[2] != 0; }
};

/// Puts the fragments of one stream of frames together. Never holds more than one frame, and no
/// more than that frame's size allows. Owner: whoever reads the socket.
class FrameAssembler {
public:
    enum class Result {
        Partial,   ///< more fragments are needed
        Complete,  ///< take() gives the frame
        Broken,    ///< the frame begun before was given up; this fragment may have begun another
    };

    Result add(const FrameFragment& fragment);
    LinkFrame take();

private:
    bool continues(const FrameFragment& fragment) const;

    LinkFrame m_frame;
    uint16_t m_nextIndex = 0;  ///< 0: no frame is begun
    uint32_t m_totalBytes = 0;
};

}  // namespace orvelle
