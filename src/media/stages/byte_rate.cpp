#include "media/stages/byte_rate.h"

#include <algorithm>
#include <limits>

namespace orvelle {

void ByteRate::restart(int64_t nowUs) {
    m_bytes = 0;
    m_rate = 0;
    m_updatedUs = nowUs;
}

void ByteRate::update(int64_t nowUs) {
    const int64_t elapsedUs = nowUs - m_updatedUs;
    if (elapsedUs <= kIntervalUs)
        return;
    m_updatedUs = nowUs;
    const double bytesPerSecond = static_cast<double>(m_bytes.exchange(0)) * 1e6 / elapsedUs;
    const double rate = m_rate / 2 + bytesPerSecond * 0.5;
    m_rate = static_cast<int>(std::min<double>(rate, std::numeric_limits<int>::max()));
}

int ByteRate::bytesPerSecond(int64_t nowUs) const {
    return nowUs - m_updatedUs > kStaleUs ? 0 : m_rate.load();
}

}  // namespace orvelle
