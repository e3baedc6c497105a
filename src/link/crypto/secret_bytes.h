#pragma once

#include <sodium.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvelle {

/// Key material of a fixed size; its memory is wiped when it goes.
template <size_t Size>
class SecretBytes {
public:
    SecretBytes() = default;
    explicit SecretBytes(const std::array<uint8_t, Size>& bytes) : m_bytes(bytes) {}
    SecretBytes(const SecretBytes&) = default;
    SecretBytes& operator=(const SecretBytes&) = default;
    ~SecretBytes() { sodium_memzero(m_bytes.data(), Size); }

    uint8_t* data() { return m_bytes.data(); }
    const uint8_t* data() const { return m_bytes.data(); }
    static constexpr size_t size() { return Size; }

private:
    std::array<uint8_t, Size> m_bytes{};
};

using SecretKey = SecretBytes<32>;

}  // namespace orvelle
