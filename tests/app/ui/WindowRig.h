// What the tests of views share: a state with a loaded file of ten seconds, and a theme.
// Threads: one.
#pragma once

#include "app/core/CommandCenter.h"
#include "app/ui/ThemeSource.h"
#include "tests/support/StateRig.h"

#include <vector>

namespace quillet {

struct WindowRig : StateRig {
    Notifications notifications;
    CommandCenter commands{ *state, notifications };
    ThemeSource theme;

    explicit WindowRig(double durationSeconds = 10)
        : StateRig(durationSeconds)
    {
        state->setWaveformSamples(std::vector<float>(2000, 0.5F));
        state->setLoadingState(LoadingState::loaded());
    }
};

}  // namespace quillet
