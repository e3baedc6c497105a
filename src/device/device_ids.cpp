#include "device/device_ids.h"

#include <limits>
#include <mutex>

#include "core/configure.h"

namespace orvelle {

static int idAfter(int highest) {
    return highest < 0 || highest == std::numeric_limits<int>::max() ? 1 : highest + 1;
}

int takeId(const QString& counter, const std::function<bool(int)>& isTaken) {
    static std::mutex mutex;  // read and written as one step
    const std::lock_guard<std::mutex> lock(mutex);
    KvConfigure settings;
    int id = idAfter(settings.getInt(counter, 0));
    // Names are far fewer than numbers, so there is a free one.
    while (isTaken && isTaken(id))
        id = idAfter(id);
    settings.setInt(counter, id);
    return id;
}

}  // namespace orvelle
