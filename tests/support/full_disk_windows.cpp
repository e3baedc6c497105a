#include "support/full_disk.h"

namespace orvelle::test {

struct FullDisk::Limit {};

FullDisk::FullDisk(uint64_t) {}

FullDisk::~FullDisk() = default;

bool FullDisk::isPossible() {
    return false;
}

}  // namespace orvelle::test
