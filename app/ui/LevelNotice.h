// Says what is wrong with the open song's numbers, where something is.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/Notice.h"

namespace quillet {

class LevelNotice final : public Notice {
    Q_OBJECT

public:
    /// Both outlive the notice.
    LevelNotice(const AppState& state, const ThemeSource& source, QWidget* parent = nullptr);
};

}  // namespace quillet
