#include "link/passphrase.h"

#include <gnutls/crypto.h>

#include <array>
#include <map>
#include <mutex>
#include <tuple>

namespace orvelle {

namespace {

constexpr unsigned kIterations = 100000;
constexpr size_t kKeyBytes = 32;
constexpr size_t kMaxCached = 64;

using CacheKey = std::tuple<std::string, std::string, std::string>;

std::mutex s_cacheMutex;  // guards cache()

std::map<CacheKey, std::string>& cache() {
    static std::map<CacheKey, std::string> instance;
    return instance;
}

gnutls_datum_t datum(std::string& text) {
    return {reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned>(text.size())};
}

std::string hex(const std::array<unsigned char, kKeyBytes>& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

}  // namespace

std::optional<std::string> derivePassphrase(const std::string& uid, const std::string& account,
                                            const std::string& password) {
    const CacheKey key{uid, account, password};
    {
        std::lock_guard<std::mutex> lock(s_cacheMutex);
        const auto known = cache().find(key);
        if (known != cache().end())
            return known->second;
    }

    std::string secret = password;
    std::string salt = uid + account;
    const gnutls_datum_t secretDatum = datum(secret);
    const gnutls_datum_t saltDatum = datum(salt);
    std::array<unsigned char, kKeyBytes> derived{};
    if (gnutls_pbkdf2(GNUTLS_MAC_SHA256, &secretDatum, &saltDatum, kIterations, derived.data(),
                      derived.size()) != 0)
        return std::nullopt;

    std::string phrase = hex(derived);
    std::lock_guard<std::mutex> lock(s_cacheMutex);
    if (cache().size() >= kMaxCached)
        cache().clear();
    cache().emplace(key, phrase);
    return phrase;
}

}  // namespace orvelle
