#include "link/wire/login.h"

#include "link/wire/byte_order.h"
#include "link/wire/wire.h"

#include <algorithm>
#include <cstring>

namespace orvelle {

namespace {

constexpr char kMagic[] = {'O', 'L', 'D'};
constexpr size_t kVersionAt = 3;
constexpr size_t kKindAt = 4;
constexpr size_t kTokenAt = 8;
constexpr size_t kHeaderBytes = 16;

enum class Kind : uint8_t {
    Hello = 1,
    Cookie = 2,
    Welcome = 3,
    Proof = 4,
    Ready = 5,
    Refused = 6,
};

constexpr size_t kCookieAt = kHeaderBytes;
constexpr size_t kNonceAt = kCookieAt + sizeof(Cookie);
constexpr size_t kUidAt = kNonceAt + sizeof(Nonce32);
constexpr size_t kAccountAt = kUidAt + kMaxUidLength;
constexpr size_t kAccountBytes = 32;
constexpr size_t kShareAt = kAccountAt + kAccountBytes;
constexpr size_t kHelloBytes = kShareAt + sizeof(CpaceShare);

constexpr size_t kCookieBytes = kHeaderBytes + sizeof(Cookie);
constexpr size_t kWelcomeShareAt = kHeaderBytes + sizeof(Nonce32);
constexpr size_t kWelcomeBytes = kWelcomeShareAt + sizeof(CpaceShare);
constexpr size_t kWayAt = kHeaderBytes;
constexpr size_t kOriginAt = kWayAt + 8;
constexpr size_t kProofTagAt = kWayAt + 12;
constexpr size_t kProofBytes = kProofTagAt + sizeof(Tag);
constexpr size_t kPortAt = kHeaderBytes;
constexpr size_t kReadyTagAt = kPortAt + 4;
constexpr size_t kReadyBytes = kReadyTagAt + sizeof(Tag);
constexpr size_t kRefusedBytes = kHeaderBytes + 4;
static_assert(kCookieBytes <= kHelloBytes && kWelcomeBytes <= kHelloBytes &&
              kReadyBytes <= kProofBytes && kRefusedBytes <= kProofBytes);

Bytes begin(Kind kind, size_t size, uint64_t token) {
    Bytes out(size, 0);
    std::copy(std::begin(kMagic), std::end(kMagic), out.begin());
    out[kVersionAt] = kProtocolVersion;
    out[kKindAt] = static_cast<uint8_t>(kind);
    putU64(&out[kTokenAt], token);
    return out;
}

template <class Array>
void put(Bytes& out, size_t at, const Array& array) {
    std::copy(array.begin(), array.end(), out.begin() + static_cast<std::ptrdiff_t>(at));
}

template <class Array>
void get(Array& array, const uint8_t* from) {
    std::copy(from, from + array.size(), array.begin());
}

std::string fixedText(const uint8_t* data, size_t room) {
    return std::string(data, std::find(data, data + room, uint8_t{0}));
}

struct Encoder {
    Bytes operator()(const LoginHello& m) const {
        Bytes out = begin(Kind::Hello, kHelloBytes, m.token);
        put(out, kCookieAt, m.cookie);
        put(out, kNonceAt, m.nonce);
        put(out, kUidAt, m.uid.substr(0, kMaxUidLength));
        put(out, kAccountAt, m.account.substr(0, kAccountBytes));
        put(out, kShareAt, m.share);
        return out;
    }
    Bytes operator()(const LoginCookie& m) const {
        Bytes out = begin(Kind::Cookie, kCookieBytes, m.token);
        put(out, kHeaderBytes, m.cookie);
        return out;
    }
    Bytes operator()(const LoginWelcome& m) const {
        Bytes out = begin(Kind::Welcome, kWelcomeBytes, m.token);
        put(out, kHeaderBytes, m.nonce);
        put(out, kWelcomeShareAt, m.share);
        return out;
    }
    Bytes operator()(const LoginProof& m) const {
        Bytes out = begin(Kind::Proof, kProofBytes, m.token);
        putU64(&out[kWayAt], m.way);
        out[kOriginAt] = m.isFromSocketPort ? 1 : 0;
        put(out, kProofTagAt, m.tag);
        return out;
    }
    Bytes operator()(const LoginReady& m) const {
        Bytes out = begin(Kind::Ready, kReadyBytes, m.token);
        putU16(&out[kPortAt], m.port);
        put(out, kReadyTagAt, m.tag);
        return out;
    }
    Bytes operator()(const LoginRefused& m) const {
        Bytes out = begin(Kind::Refused, kRefusedBytes, m.token);
        putU32(&out[kHeaderBytes], static_cast<uint32_t>(m.reason));
        return out;
    }
    Bytes operator()(const LoginOfOtherVersion& m) const {
        return (*this)(LoginRefused{m.token, 0});
    }
};

LoginHello decodeHello(const uint8_t* data, uint64_t token) {
    LoginHello hello;
    hello.token = token;
    get(hello.cookie, data + kCookieAt);
    get(hello.nonce, data + kNonceAt);
    hello.uid = fixedText(data + kUidAt, kMaxUidLength);
    hello.account = fixedText(data + kAccountAt, kAccountBytes);
    get(hello.share, data + kShareAt);
    return hello;
}

LoginMessage decodeBody(Kind kind, const uint8_t* data, uint64_t token) {
    switch (kind) {
        case Kind::Hello:
            return decodeHello(data, token);
        case Kind::Cookie: {
            LoginCookie cookie{token, {}};
            get(cookie.cookie, data + kHeaderBytes);
            return cookie;
        }
        case Kind::Welcome: {
            LoginWelcome welcome{token, {}, {}};
            get(welcome.nonce, data + kHeaderBytes);
            get(welcome.share, data + kWelcomeShareAt);
            return welcome;
        }
        case Kind::Proof: {
            LoginProof proof{token, getU64(data + kWayAt), data[kOriginAt] != 0, {}};
            get(proof.tag, data + kProofTagAt);
            return proof;
        }
        case Kind::Ready: {
            LoginReady ready{token, getU16(data + kPortAt), {}};
            get(ready.tag, data + kReadyTagAt);
            return ready;
        }
        case Kind::Refused:
            break;
    }
    return LoginRefused{token, static_cast<int32_t>(getU32(data + kHeaderBytes))};
}

size_t sizeOf(Kind kind) {
    switch (kind) {
        case Kind::Hello:
            return kHelloBytes;
        case Kind::Cookie:
            return kCookieBytes;
        case Kind::Welcome:
            return kWelcomeBytes;
        case Kind::Proof:
            return kProofBytes;
        case Kind::Ready:
            return kReadyBytes;
        case Kind::Refused:
            return kRefusedBytes;
    }
    return 0;
}

Bytes signedBytes(LoginProof proof) {
    proof.isFromSocketPort = false;  // says only by which way it came
    proof.tag = {};
    return encodeLogin(proof);
}

Bytes signedBytes(LoginReady ready) {
    ready.tag = {};
    return encodeLogin(ready);
}

}  // namespace

Bytes encodeLogin(const LoginMessage& message) {
    return std::visit(Encoder{}, message);
}

std::optional<LoginMessage> decodeLogin(const uint8_t* data, size_t size) {
    if (size < kHeaderBytes || !std::equal(std::begin(kMagic), std::end(kMagic), data))
        return std::nullopt;
    const uint64_t token = getU64(data + kTokenAt);
    if (data[kVersionAt] != kProtocolVersion)
        return LoginOfOtherVersion{token, data[kKindAt] == static_cast<uint8_t>(Kind::Hello)};
    const Kind kind{data[kKindAt]};
    if (size != sizeOf(kind))
        return std::nullopt;
    return decodeBody(kind, data, token);
}

Bytes associatedData(const LoginHello& hello) {
    LoginHello bound = hello;
    bound.cookie = {};
    bound.share = {};
    return encodeLogin(bound);
}

Bytes associatedData(const LoginWelcome& welcome) {
    LoginWelcome bound = welcome;
    bound.share = {};
    return encodeLogin(bound);
}

Bytes loginContext(const std::string& uid, const std::string& account) {
    const std::string protocol = "orvelle link";
    return withLengths({Bytes(protocol.begin(), protocol.end()), Bytes{kProtocolVersion},
                        Bytes(uid.begin(), uid.end()), Bytes(account.begin(), account.end())});
}

LoginKeys::LoginKeys(const CpaceKey& exchange)
    : clientProof(deriveKey(exchange, "client proof")),
      cameraProof(deriveKey(exchange, "camera proof")),
      session(deriveKey(exchange, "session")) {}

void sign(LoginProof& proof, const LoginKeys& keys) {
    const Bytes bytes = signedBytes(proof);
    proof.tag = authenticate(keys.clientProof, bytes.data(), bytes.size());
}

void sign(LoginReady& ready, const LoginKeys& keys) {
    const Bytes bytes = signedBytes(ready);
    ready.tag = authenticate(keys.cameraProof, bytes.data(), bytes.size());
}

bool isAuthentic(const LoginProof& proof, const LoginKeys& keys) {
    const Bytes bytes = signedBytes(proof);
    return isAuthentic(keys.clientProof, bytes.data(), bytes.size(), proof.tag);
}

bool isAuthentic(const LoginReady& ready, const LoginKeys& keys) {
    const Bytes bytes = signedBytes(ready);
    return isAuthentic(keys.cameraProof, bytes.data(), bytes.size(), ready.tag);
}

}  // namespace orvelle
