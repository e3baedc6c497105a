#pragma once

#include <optional>

namespace orvelle {

/// Answers --help and --version on standard output, without a display; the exit code if there was
/// one of them. What else stands there is the toolkit's.
std::optional<int> answerCommandLine(int argc, const char* const* argv);

/// While it lives, which is as long as the application object is being made, a toolkit that finds
/// no display says so in one line and ends the program with 1, instead of a page and a crash.
class DisplayNeeded {
public:
    DisplayNeeded();
    ~DisplayNeeded();
    DisplayNeeded(const DisplayNeeded&) = delete;
    DisplayNeeded& operator=(const DisplayNeeded&) = delete;
};

}  // namespace orvelle
