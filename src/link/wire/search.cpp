#include "link/wire/byte_order.h"
#include "link/wire/wire.h"

#include <algorithm>
#include <cstring>

namespace orvelle {

namespace {

constexpr char kQueryMagic[] = "OLQ1";
constexpr char kAnswerMagic[] = "OLA1";
constexpr size_t kNonceAt = 4;
constexpr size_t kUidAt = 8;
constexpr size_t kPortAt = kUidAt + kMaxUidLength;
constexpr size_t kNameAt = kPortAt + 2;
constexpr size_t kVersionAt = kNameAt + kMaxDeviceNameBytes;
static_assert(kVersionAt < kSearchBytes);

bool isAsciiAlnum(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

SearchDatagram begin(const char* magic, uint32_t nonce, const std::string& uid) {
    SearchDatagram out{};
    std::memcpy(out.data(), magic, kNonceAt);
    putU32(&out[kNonceAt], nonce);
    std::memcpy(&out[kUidAt], uid.data(), std::min<size_t>(uid.size(), kMaxUidLength));
    return out;
}

bool hasMagic(const uint8_t* data, size_t size, const char* magic) {
    return size == kSearchBytes && std::memcmp(data, magic, kNonceAt) == 0;
}

std::string fixedText(const uint8_t* data, size_t room) {
    return std::string(data, std::find(data, data + room, uint8_t{0}));
}

}  // namespace

bool isValidUid(const std::string& uid) {
    return !uid.empty() && uid.size() <= kMaxUidLength &&
           std::all_of(uid.begin(), uid.end(), isAsciiAlnum);
}

SearchDatagram encodeSearchQuery(const SearchQuery& query) {
    return begin(kQueryMagic, query.nonce, query.uid);
}

SearchDatagram encodeSearchAnswer(const SearchAnswer& answer) {
    SearchDatagram out = begin(kAnswerMagic, answer.nonce, answer.uid);
    putU16(&out[kPortAt], answer.port);
    std::memcpy(&out[kNameAt], answer.deviceName.data(),
                std::min<size_t>(answer.deviceName.size(), kMaxDeviceNameBytes));
    out[kVersionAt] = answer.version;
    return out;
}

std::optional<SearchQuery> decodeSearchQuery(const uint8_t* data, size_t size) {
    if (!hasMagic(data, size, kQueryMagic))
        return std::nullopt;
    SearchQuery query{getU32(data + kNonceAt), fixedText(data + kUidAt, kMaxUidLength)};
    if (!query.uid.empty() && !isValidUid(query.uid))
        return std::nullopt;
    return query;
}

std::optional<SearchAnswer> decodeSearchAnswer(const uint8_t* data, size_t size) {
    if (!hasMagic(data, size, kAnswerMagic))
        return std::nullopt;
    SearchAnswer answer{getU32(data + kNonceAt), fixedText(data + kUidAt, kMaxUidLength),
                        getU16(data + kPortAt), fixedText(data + kNameAt, kMaxDeviceNameBytes),
                        // Version 1 left the byte 0.
                        std::max<uint8_t>(data[kVersionAt], 1)};
    if (!isValidUid(answer.uid) || answer.port == 0)
        return std::nullopt;
    return answer;
}

}  // namespace orvelle
