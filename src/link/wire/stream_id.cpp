#include "link/wire/wire.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace orvelle {

namespace {

constexpr char kPrefix[] = "#!::";
constexpr size_t kMaxStreamIdBytes = 512;
constexpr size_t kMaxAccountBytes = 32;

bool isAsciiAlnum(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAlnumText(const std::string& text, size_t maxBytes) {
    return !text.empty() && text.size() <= maxBytes &&
           std::all_of(text.begin(), text.end(), isAsciiAlnum);
}

std::optional<uint64_t> parseNumber(const std::string& text, int base, uint64_t max) {
    if (!isAlnumText(text, 16))
        return std::nullopt;
    char* end = nullptr;
    const uint64_t value = std::strtoull(text.c_str(), &end, base);
    if (*end != '\0' || value > max)
        return std::nullopt;
    return value;
}

bool setPurpose(StreamRequest& request, const std::string& value) {
    if (value == "probe")
        request.purpose = StreamPurpose::Probe;
    else if (value == "control")
        request.purpose = StreamPurpose::Control;
    else if (value == "media")
        request.purpose = StreamPurpose::Media;
    else
        return false;
    return true;
}

// Keys that are not ours are skipped, so that a later version can add some.
bool setField(StreamRequest& request, const std::string& key, const std::string& value) {
    if (key == "r") {
        request.uid = value;
        return isValidUid(value);
    }
    if (key == "u") {
        request.account = value;
        return isAlnumText(value, kMaxAccountBytes);
    }
    if (key == "k")
        return setPurpose(request, value);
    if (key == "s") {
        const auto token = parseNumber(value, 16, UINT64_MAX);
        request.token = token.value_or(0);
        return token.has_value();
    }
    if (key == "c" || key == "v") {
        const auto number = parseNumber(value, 10, key == "c" ? kMaxLinkChannels - 1 : 255);
        (key == "c" ? request.channel : request.version) = static_cast<int>(number.value_or(0));
        return number.has_value();
    }
    return true;
}

const char* purposeName(StreamPurpose purpose) {
    switch (purpose) {
        case StreamPurpose::Probe:
            return "probe";
        case StreamPurpose::Control:
            return "control";
        case StreamPurpose::Media:
            return "media";
    }
    return "";
}

}  // namespace

bool isValidUid(const std::string& uid) {
    return isAlnumText(uid, kMaxUidLength);
}

std::string encodeStreamId(const StreamRequest& request) {
    char tail[80];
    std::snprintf(tail, sizeof tail, ",m=request,k=%s,s=%016llx,c=%d,v=%d",
                  purposeName(request.purpose), static_cast<unsigned long long>(request.token),
                  request.channel, request.version);
    return kPrefix + ("r=" + request.uid) + ",u=" + request.account + tail;
}

std::optional<StreamRequest> decodeStreamId(const std::string& text) {
    const std::string prefix = kPrefix;
    if (text.size() > kMaxStreamIdBytes || text.compare(0, prefix.size(), prefix) != 0)
        return std::nullopt;
    StreamRequest request;
    request.version = -1;
    bool hasPurpose = false;
    for (size_t at = prefix.size(); at <= text.size();) {
        const size_t end = std::min(text.find(',', at), text.size());
        const std::string field = text.substr(at, end - at);
        const size_t equals = field.find('=');
        if (equals == std::string::npos)
            return std::nullopt;
        const std::string key = field.substr(0, equals);
        if (!setField(request, key, field.substr(equals + 1)))
            return std::nullopt;
        hasPurpose = hasPurpose || key == "k";
        at = end + 1;
    }
    if (!hasPurpose || request.uid.empty() || request.account.empty() || request.version < 0)
        return std::nullopt;
    return request;
}

}  // namespace orvelle
