#include "link/wire/frame_assembler.h"

#include <utility>

namespace orvelle {

bool FrameAssembler::continues(const FrameFragment& fragment) const {
    return m_nextIndex > 0 && fragment.index == m_nextIndex && fragment.number == m_frame.number &&
           fragment.totalBytes == m_totalBytes;
}

FrameAssembler::Result FrameAssembler::add(const FrameFragment& fragment) {
    const bool wasBegun = m_nextIndex > 0;
    const bool isWanted = continues(fragment);
    if (!isWanted) {
        m_nextIndex = 0;
        m_frame = {};
        if (fragment.index != 0)
            return Result::Broken;
        m_frame.number = fragment.number;
        m_frame.info = fragment.info;
        m_frame.data.reserve(fragment.totalBytes);
        m_totalBytes = fragment.totalBytes;
    }
    m_frame.data.insert(m_frame.data.end(), fragment.data, fragment.data + fragment.size);
    m_nextIndex = static_cast<uint16_t>(fragment.index + 1);
    if (m_nextIndex == fragment.count) {
        m_nextIndex = 0;
        return Result::Complete;
    }
    return wasBegun && !isWanted ? Result::Broken : Result::Partial;
}

LinkFrame FrameAssembler::take() {
    return std::exchange(m_frame, {});
}

}  // namespace orvelle
