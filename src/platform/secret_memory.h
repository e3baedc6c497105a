#pragma once

namespace orvelle {

/// From now on no core dump and no crash report carries this process's memory, and no other
/// process of the same user may read it. To be called first of all; programs started later are
/// not affected.
void keepMemorySecret();

}  // namespace orvelle
