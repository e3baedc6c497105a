#include "camera/demo/demo_tone.h"

#include <cmath>

namespace orvelle {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kHertz = 440.0;
constexpr double kLoudness = 0.2;
constexpr double kBeepLoudness = 0.5;
constexpr double kBeepSec = 0.1;

}  // namespace

DemoTone::DemoTone(int sampleRate) : m_sampleRate(sampleRate) {}

void DemoTone::fill(std::vector<float>& samples) {
    for (float& sample : samples) {
        const int64_t inSecond = m_sample % m_sampleRate;
        const bool isBeep = double(inSecond) < m_sampleRate * kBeepSec;
        const double phase = 2.0 * kPi * kHertz * double(m_sample) / m_sampleRate;
        sample = static_cast<float>((isBeep ? kBeepLoudness : kLoudness) * std::sin(phase));
        ++m_sample;
    }
}

}  // namespace orvelle
