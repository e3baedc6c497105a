#include "render/repaint_plan.h"

#include <algorithm>

namespace orvelle {
namespace {

bool isPlaying(const RepaintPlan::View& view, int64_t nowMs) {
    return view.askedMs && nowMs - *view.askedMs < RepaintPlan::kPlayingMs;
}

bool isDirty(const RepaintPlan::View* view) {
    return view->isDirty;
}

}  // namespace

void RepaintPlan::add(View* view) {
    m_views.push_back(view);
}

void RepaintPlan::remove(View* view) {
    m_views.erase(std::remove(m_views.begin(), m_views.end(), view), m_views.end());
}

void RepaintPlan::note(View& view, int64_t nowMs) {
    if (std::none_of(m_views.begin(), m_views.end(), isDirty))
        m_firstDirtyMs = nowMs;
    view.isDirty = true;
    const int64_t gapMs = isPlaying(view, nowMs) ? nowMs - *view.askedMs : 0;
    const bool isFirstGap = gapMs == 0 || view.periodMs == 0;
    view.periodMs = isFirstGap ? gapMs : view.periodMs + (gapMs - view.periodMs) / 4;
    view.askedMs = nowMs;
}

void RepaintPlan::forget(View& view) {
    view = {};
}

std::optional<int64_t> RepaintPlan::dueMs(int64_t nowMs) const {
    bool isAnyDirty = false;
    bool isAnyAwaited = false;
    for (const View* view : m_views) {
        isAnyDirty = isAnyDirty || view->isDirty;
        isAnyAwaited = isAnyAwaited || (!view->isDirty && isPlaying(*view, nowMs));
    }
    if (!isAnyDirty)
        return std::nullopt;
    const int64_t due = isAnyAwaited ? m_firstDirtyMs + waitMs(nowMs) : nowMs;
    return m_takenMs ? std::max(due, *m_takenMs + kMinIntervalMs) : due;
}

std::vector<RepaintPlan::View*> RepaintPlan::take(int64_t nowMs) {
    m_takenMs = nowMs;
    std::vector<View*> dirty;
    std::copy_if(m_views.begin(), m_views.end(), std::back_inserter(dirty), isDirty);
    for (View* view : dirty)
        view->isDirty = false;
    return dirty;
}

int64_t RepaintPlan::waitMs(int64_t nowMs) const {
    int64_t wait = kMaxWaitMs;
    for (const View* view : m_views) {
        if (isPlaying(*view, nowMs) && view->periodMs > 0)
            wait = std::min(wait, view->periodMs * 3 / 4);
    }
    return wait;
}

}  // namespace orvelle
