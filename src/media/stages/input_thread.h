#pragma once

#include "core/thread.h"

namespace orvelle {

/// A worker of an input, which owns and outlives it.
template <class Input>
class InputThread : public KvThread {
public:
    InputThread(const QString& name, Input& input) : KvThread(name), m_input(input) {}

    void run() override {
        work();
        stop();
        ended();
    }

protected:
    virtual void work() = 0;
    /// The thread counts as stopped now.
    virtual void ended() {}

    Input& m_input;
};

}  // namespace orvelle
