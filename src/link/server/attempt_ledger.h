#pragma once

#include "platform/ipv4.h"

#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>

namespace orvelle {

/// Who has tried to log in how often: a budget of exchanges for each address and for all that have
/// not yet proved the password, and a delay that grows with the wrong passwords of an address. It
/// knows addresses that were shown to be real only, at most kMaxAddresses of them; the one that was
/// silent longest is forgotten first.
///
/// Pure: times are given. One thread.
class AttemptLedger {
public:
    static constexpr size_t kMaxAddresses = 4096;

    enum class Verdict {
        Allowed,     ///< one exchange was taken off the budget
        OverBudget,  ///< too many in too short a time
        Delayed,     ///< too many wrong passwords; no exchange before the delay has passed
    };
    Verdict judge(in_addr address, int64_t nowMs);

    bool isDelayed(in_addr address, int64_t nowMs) const;

    void noteWrongPassword(in_addr address, int64_t nowMs);
    void noteRightPassword(in_addr address);

    /// A line for the log about one address that was refused; at most one a minute for each.
    std::optional<std::string> nextLogLine(int64_t nowMs);

    size_t addresses() const { return m_entries.size(); }

private:
    /// Fills up with time and is emptied by one for each exchange.
    struct Budget {
        double left = 0;
        int64_t filledMs = 0;
    };
    struct Entry {
        in_addr address{};
        Budget budget;
        bool hasProved = false;  ///< the password, once
        int wrong = 0;           ///< in a row
        int64_t lastWrongMs = 0;
        int64_t delayedUntilMs = 0;
        int unreported = 0;  ///< wrong passwords and refused attempts since the last line
        int64_t reportedMs = 0;
    };

    Entry& entryOf(in_addr address, int64_t nowMs);
    static bool take(Budget& budget, double perSecond, double most, int64_t nowMs);

    std::list<Entry> m_entries;  ///< the latest first
    std::unordered_map<uint32_t, std::list<Entry>::iterator> m_byAddress;
    Budget m_total{kTotalBurst, 0};

    static constexpr double kTotalPerSecond = 200;
    static constexpr double kTotalBurst = 200;
};

}  // namespace orvelle
