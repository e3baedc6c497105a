#pragma once

#include <cstdint>
#include <vector>

namespace orvelle {

/// A soft steady tone, continuous over calls, with a short beep at each full second of its own
/// sample clock so that sound and picture can be compared by ear. One thread.
class DemoTone {
public:
    explicit DemoTone(int sampleRate);

    void fill(std::vector<float>& samples);

private:
    const int m_sampleRate;
    int64_t m_sample = 0;
};

}  // namespace orvelle
