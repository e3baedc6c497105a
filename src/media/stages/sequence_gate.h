#pragma once

#include <cstdint>

#include "media/stages/damage_span.h"

namespace orvelle {

/// Finds video that builds on a missing frame, by the frames' sequence numbers.
///
/// After a gap that is all up to a key frame, or of a DamageSpan. The first frames of a stream are
/// let through whatever their numbers: a camera may count oddly while it starts. One thread.
class SequenceGate {
public:
    /// Whether the frame can be shown.
    bool accepts(uint8_t sequence, bool isKey, double timeSec);
    /// A loss that the numbers need not show, since they wrap.
    void noteLoss() { m_gap = true; }

private:
    static constexpr int kUncheckedFrames = 2;

    int m_previous = -1;
    int m_inOrder = 0;
    bool m_checking = false;  ///< once more than kUncheckedFrames came in order
    bool m_gap = false;       ///< since the last frame that was accepted
    DamageSpan m_damage;
};

}  // namespace orvelle
