#pragma once

#include <optional>

namespace orvelle::test {

/// What this program does for a test that needs another process: its exit code, or nothing where it
/// was started for the tests themselves.
std::optional<int> runAsChild(int argc, char** argv);

}  // namespace orvelle::test
