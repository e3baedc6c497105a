#include "support/no_more_files.h"

namespace orvelle::test {

struct NoMoreFiles::Limit {};

NoMoreFiles::NoMoreFiles() = default;

NoMoreFiles::~NoMoreFiles() = default;

bool NoMoreFiles::isPossible() {
    return false;
}

}  // namespace orvelle::test
