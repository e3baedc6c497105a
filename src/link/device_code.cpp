#include "link/device_code.h"

#include "core/wipe.h"
#include "link/wire/wire.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

// A code is one large number in base 31 followed by two check digits; docs/protocol.md shows the
// arithmetic. 31 is prime, which is what lets the check digits catch what they promise.

namespace orvelle {

namespace {

constexpr char kSymbols[] = "23456789ABCDEFGHJKMNPQRSTUVWXYZ";  // neither 0, O nor 1, I, L
constexpr int kBase = sizeof kSymbols - 1;
static_assert(kBase == 31);
constexpr int kCheckDigits = 2;
constexpr size_t kMaxDigits = 96;
constexpr size_t kGroup = 5;
constexpr size_t kBufferBytes = 1024;

constexpr int kRoot = 3;  // generates all of 1..30 modulo 31

std::string byteRange(int first, int last) {
    std::string range;
    for (int byte = first; byte <= last; ++byte)
        range += static_cast<char>(byte);
    return range;
}

// From the smallest to the one that holds any text; a text uses the first that holds it.
const std::vector<std::string>& alphabets() {
    static const std::string digits = byteRange('0', '9');
    static const std::string upper = byteRange('A', 'Z');
    static const std::string lower = byteRange('a', 'z');
    static const std::vector<std::string> all{digits,
                                              digits + upper,
                                              digits + lower,
                                              digits + upper + lower,
                                              byteRange(32, 126),
                                              byteRange(1, 255)};
    return all;
}

int alphabetOf(const std::string& text) {
    int index = 0;
    while (text.find_first_not_of(alphabets()[static_cast<size_t>(index)]) != std::string::npos)
        ++index;
    return index;
}

// A number that values of mixed ranges are pushed onto and popped from, last in first out.
class Number {
public:
    Number() = default;
    explicit Number(std::vector<int> digits) : m_digits(std::move(digits)) {}

    void push(int range, int value) {
        int carry = value;
        for (int& digit : m_digits) {
            carry += digit * range;
            digit = carry % kBase;
            carry /= kBase;
        }
        for (; carry > 0; carry /= kBase)
            m_digits.push_back(carry % kBase);
    }

    int pop(int range) {
        int rest = 0;
        for (auto digit = m_digits.rbegin(); digit != m_digits.rend(); ++digit) {
            rest = rest * kBase + *digit;
            *digit = rest / range;
            rest %= range;
        }
        return rest;
    }

    void pushText(const std::string& text, size_t maxBytes) {
        const int index = alphabetOf(text);
        const std::string& alphabet = alphabets()[static_cast<size_t>(index)];
        for (auto byte = text.rbegin(); byte != text.rend(); ++byte)
            push(static_cast<int>(alphabet.size()), static_cast<int>(alphabet.find(*byte)));
        push(static_cast<int>(alphabets().size()) + 1, index + 1);  // never 0, nor is the number
        push(static_cast<int>(maxBytes), static_cast<int>(text.size()) - 1);
    }

    std::string popText(size_t maxBytes) {
        const int size = pop(static_cast<int>(maxBytes)) + 1;
        const int index = pop(static_cast<int>(alphabets().size()) + 1) - 1;
        if (index < 0)
            return {};
        const std::string& alphabet = alphabets()[static_cast<size_t>(index)];
        std::string text;
        for (int i = 0; i < size; ++i)
            text += alphabet[static_cast<size_t>(pop(static_cast<int>(alphabet.size())))];
        return text;
    }

    bool isZero() const {
        return std::all_of(m_digits.begin(), m_digits.end(), [](int digit) { return digit == 0; });
    }

    // The least significant first.
    const std::vector<int>& digits() const { return m_digits; }

private:
    std::vector<int> m_digits;
};

// The digits, least significant first, as a polynomial at `at`, modulo 31.
int evaluate(const std::vector<int>& digits, int at) {
    int sum = 0;
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit)
        sum = (sum * at + *digit) % kBase;
    return sum;
}

bool isChecked(const std::vector<int>& digits) {
    return evaluate(digits, kRoot) == 0 && evaluate(digits, kRoot * kRoot) == 0;
}

std::vector<int> withCheckDigits(const std::vector<int>& number) {
    std::vector<int> digits(kCheckDigits, 0);
    digits.insert(digits.end(), number.begin(), number.end());
    // There is exactly one pair; 961 cases are cheaper to try than to explain.
    while (!isChecked(digits)) {
        digits[0] = (digits[0] + 1) % kBase;
        if (digits[0] == 0)
            digits[1] = (digits[1] + 1) % kBase;
    }
    return digits;
}

std::optional<std::vector<int>> digitsOf(const std::string& code) {
    std::vector<int> digits;
    for (char typed : code) {
        if (typed == '-' || typed == ' ' || (typed >= '\t' && typed <= '\r'))
            continue;
        if (typed >= 'a' && typed <= 'z')
            typed = static_cast<char>(typed - 'a' + 'A');
        const char* symbol = std::find(kSymbols, kSymbols + kBase, typed);
        if (symbol == kSymbols + kBase || digits.size() == kMaxDigits)
            return std::nullopt;
        digits.push_back(static_cast<int>(symbol - kSymbols));
    }
    std::reverse(digits.begin(), digits.end());
    return digits;
}

// Grouped from the end, so that the last four characters are never parted by a hyphen.
std::string textOf(const std::vector<int>& digits) {
    std::string text;
    for (size_t left = digits.size(); left > 0; --left) {
        text += kSymbols[digits[left - 1]];
        if (left > 1 && (left - 1) % kGroup == 0)
            text += '-';
    }
    return text;
}

}  // namespace

std::string encodeDeviceCode(const std::string& uid, const std::string& password) {
    if (!isValidUid(uid) || password.empty() || password.size() > kMaxPasswordBytes ||
        password.find('\0') != std::string::npos)
        return {};
    Number number;
    number.pushText(password, kMaxPasswordBytes);
    number.pushText(uid, kMaxUidLength);
    return textOf(withCheckDigits(number.digits()));
}

}  // namespace orvelle

int GetDeUIDPasswd(const char* code, char* uid, char* password) {
    using namespace orvelle;
    const auto digits = digitsOf(std::string(code, strnlen(code, kBufferBytes)));
    if (!digits || digits->size() <= kCheckDigits || digits->back() == 0 || !isChecked(*digits))
        return -1;
    Number number({digits->begin() + kCheckDigits, digits->end()});
    const std::string uidText = number.popText(kMaxUidLength);
    std::string passwordText = number.popText(kMaxPasswordBytes);
    const WipedAtEnd wiped(passwordText);
    if (!number.isZero() || !isValidUid(uidText))
        return -1;
    std::memcpy(uid, uidText.c_str(), uidText.size() + 1);
    std::memcpy(password, passwordText.c_str(), passwordText.size() + 1);
    return 0;
}
