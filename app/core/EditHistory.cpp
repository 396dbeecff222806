#include "app/core/EditHistory.h"

namespace quillet {

void EditHistory::note(EditKind kind, const EditedValues& present)
{
    const double now = m_scheduler.nowSeconds();
    const bool follows = m_gesture == Gesture::none && m_done.kind() == kind && now < m_mergesUntilSeconds;
    m_mergesUntilSeconds = now + mergeSeconds;
    if (follows || m_gesture == Gesture::noted)
        return;
    if (m_gesture == Gesture::begun)
        m_gesture = Gesture::noted;
    m_undone.clear();
    if (m_done.size() == maxSteps)
        m_done.erase(m_done.begin());
    m_done.push_back({ kind, present });
}

void EditHistory::beginGesture()
{
    m_gesture = Gesture::begun;
    m_mergesUntilSeconds = 0;
}

void EditHistory::clear()
{
    m_done.clear();
    m_undone.clear();
    m_gesture = Gesture::none;
}

std::optional<EditedValues> EditHistory::move(Steps& from, Steps& to, const EditedValues& present)
{
    m_mergesUntilSeconds = 0;
    while (!from.empty()) {
        Step step = std::move(from.back());
        from.pop_back();
        // A drag may have ended where it began.
        if (step.values == present)
            continue;
        to.push_back({ step.kind, present });
        return std::move(step.values);
    }
    return std::nullopt;
}

}  // namespace quillet
