#include "link/server/attempt_ledger.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr double kAddressPerSecond = 2;
constexpr double kAddressBurst = 20;
constexpr int kFreeWrongPasswords = 5;
constexpr int64_t kFirstDelayMs = 1000;
constexpr int64_t kMaxDelayMs = 60'000;
constexpr int64_t kForgivenMs = 600'000;
constexpr int64_t kReportIntervalMs = 60'000;

int64_t delayAfter(int wrong) {
    const int doublings = std::clamp(wrong - kFreeWrongPasswords, 0, 6);
    return std::min(kFirstDelayMs << doublings, kMaxDelayMs);
}

std::string textOf(in_addr address) {
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address, text, sizeof text);
    return text;
}

}  // namespace

AttemptLedger::Entry& AttemptLedger::entryOf(in_addr address, int64_t nowMs) {
    const auto known = m_byAddress.find(address.s_addr);
    if (known != m_byAddress.end()) {
        m_entries.splice(m_entries.begin(), m_entries, known->second);
        return m_entries.front();
    }
    if (m_entries.size() >= kMaxAddresses) {
        m_byAddress.erase(m_entries.back().address.s_addr);
        m_entries.pop_back();
    }
    Entry entry;
    entry.address = address;
    entry.budget = {kAddressBurst, nowMs};
    entry.reportedMs = nowMs - kReportIntervalMs;
    m_entries.push_front(entry);
    m_byAddress[address.s_addr] = m_entries.begin();
    return m_entries.front();
}

bool AttemptLedger::take(Budget& budget, double perSecond, double most, int64_t nowMs) {
    const double filled = perSecond * static_cast<double>(nowMs - budget.filledMs) / 1000;
    budget.left = std::min(most, budget.left + filled);
    budget.filledMs = nowMs;
    if (budget.left < 1)
        return false;
    budget.left -= 1;
    return true;
}

AttemptLedger::Verdict AttemptLedger::judge(in_addr address, int64_t nowMs) {
    Entry& entry = entryOf(address, nowMs);
    if (nowMs < entry.delayedUntilMs) {
        ++entry.unreported;
        return Verdict::Delayed;
    }
    // An address that has used up its own does not use up what is there for all, and hundreds of
    // addresses do not use up what one has that knows the password.
    if (!take(entry.budget, kAddressPerSecond, kAddressBurst, nowMs) ||
        (!entry.hasProved && !take(m_total, kTotalPerSecond, kTotalBurst, nowMs))) {
        ++entry.unreported;
        return Verdict::OverBudget;
    }
    return Verdict::Allowed;
}

bool AttemptLedger::isDelayed(in_addr address, int64_t nowMs) const {
    const auto known = m_byAddress.find(address.s_addr);
    return known != m_byAddress.end() && nowMs < known->second->delayedUntilMs;
}

void AttemptLedger::noteWrongPassword(in_addr address, int64_t nowMs) {
    Entry& entry = entryOf(address, nowMs);
    if (nowMs - entry.lastWrongMs > kForgivenMs)
        entry.wrong = 0;
    ++entry.wrong;
    ++entry.unreported;
    entry.lastWrongMs = nowMs;
    if (entry.wrong >= kFreeWrongPasswords)
        entry.delayedUntilMs = nowMs + delayAfter(entry.wrong);
}

void AttemptLedger::noteRightPassword(in_addr address) {
    const auto known = m_byAddress.find(address.s_addr);
    if (known == m_byAddress.end())
        return;
    known->second->wrong = 0;
    known->second->hasProved = true;
}

std::optional<std::string> AttemptLedger::nextLogLine(int64_t nowMs) {
    for (Entry& entry : m_entries) {
        if (entry.unreported == 0 || nowMs - entry.reportedMs < kReportIntervalMs)
            continue;
        const std::string count = std::to_string(entry.unreported);
        entry.unreported = 0;
        entry.reportedMs = nowMs;
        return "refused " + count + " login attempts from " + textOf(entry.address);
    }
    return std::nullopt;
}

}  // namespace orvelle
