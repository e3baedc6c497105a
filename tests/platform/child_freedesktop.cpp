#include "child.h"

namespace orvelle::test {

std::optional<int> runAsChild(int, char**) {
    return std::nullopt;
}

}  // namespace orvelle::test
