#include "camera/demo_tone.h"

#include <cmath>

namespace orvelle {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kLoudness = 0.2;
constexpr double kBeepLoudness = 0.5;
constexpr int kBeepsPerSecondPart = 10;  ///< the beep lasts a tenth of a second

}  // namespace

DemoTone::DemoTone(int sampleRate, double hertz) : m_sampleRate(sampleRate), m_hertz(hertz) {}

void DemoTone::fill(std::vector<float>& samples) {
    for (float& sample : samples) {
        const int64_t inSecond = m_sample % m_sampleRate;
        const bool isBeep = inSecond < m_sampleRate / kBeepsPerSecondPart;
        const double phase = 2.0 * kPi * m_hertz * double(m_sample) / m_sampleRate;
        sample = static_cast<float>((isBeep ? kBeepLoudness : kLoudness) * std::sin(phase));
        ++m_sample;
    }
}

}  // namespace orvelle
