#include "media/stages/sequence_gate.h"

namespace orvelle {

bool SequenceGate::accepts(uint8_t sequence, bool isKey, double timeSec) {
    const bool inOrder = m_previous < 0 || static_cast<uint8_t>(m_previous + 1) == sequence;
    m_previous = sequence;
    if (!inOrder)
        m_gap = true;
    else if (!m_checking)
        m_checking = ++m_inOrder > kUncheckedFrames;
    if (m_checking && m_gap)
        m_damage.begin(timeSec);
    if (isKey)
        m_damage.end();
    if (m_damage.covers(timeSec))
        return false;
    m_gap = false;
    return true;
}

}  // namespace orvelle
