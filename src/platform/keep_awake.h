#pragma once

#include <memory>

namespace orvelle {

/// Keeps system and display awake while it lives. Belongs to the interface thread; needs its event
/// loop. Harmless where the desktop offers nothing of the kind.
class KeepAwake {
public:
    KeepAwake();
    ~KeepAwake();
    KeepAwake(const KeepAwake&) = delete;
    KeepAwake& operator=(const KeepAwake&) = delete;

private:
    struct Request;

    std::shared_ptr<Request> m_request;
};

}  // namespace orvelle
