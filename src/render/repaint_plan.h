#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace orvelle {

/// Decides when views with new pictures are repainted, all together.
///
/// A repaint of one view costs nearly as much as that of all, so those that change within one
/// picture period share one: it is due when every view that plays has a new picture, or when the
/// first of them has waited long enough. A view that plays alone never waits.
///
/// Knows no clock and no thread: times come from the caller, in ms of a monotonic clock.
class RepaintPlan {
public:
    /// What the new picture of one view waits at most for those of the others.
    static constexpr int64_t kMaxWaitMs = 50;
    /// No two repaints are closer, however fast pictures come.
    static constexpr int64_t kMinIntervalMs = 16;
    /// A view without a new picture for this long is not waited for.
    static constexpr int64_t kPlayingMs = 150;

    /// One view's share.
    struct View {
        bool isDirty = false;
        std::optional<int64_t> askedMs;  ///< its last new picture
        int64_t periodMs = 0;            ///< between two of them, smoothed; 0: not known
    };

    /// Borrowed until removed.
    void add(View* view);
    void remove(View* view);

    /// The view has a new picture.
    void note(View& view, int64_t nowMs);
    /// The view's picture is not awaited any more.
    void forget(View& view);
    /// When the next repaint is due; nothing while no view is dirty.
    std::optional<int64_t> dueMs(int64_t nowMs) const;
    /// The dirty views, clean from now on.
    std::vector<View*> take(int64_t nowMs);

private:
    /// Shorter than the fastest view's period, else its next picture would come first.
    int64_t waitMs(int64_t nowMs) const;

    std::vector<View*> m_views;
    int64_t m_firstDirtyMs = 0;  ///< counts while a view is dirty
    std::optional<int64_t> m_takenMs;
};

}  // namespace orvelle
