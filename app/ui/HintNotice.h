// The hints for somebody new, on a strip that a click or Escape closes for ever. They name the keys as the user has them.
// Threads: main thread.
#pragma once

#include "app/core/Hints.h"
#include "app/core/KeyMap.h"
#include "app/ui/Notice.h"

namespace quillet {

class HintNotice final : public Notice {
    Q_OBJECT

public:
    /// All outlive the notice.
    HintNotice(Hints& hints, const KeyMap& keys, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void sync();

    const Hints& m_hints;
    const KeyMap& m_keys;
};

}  // namespace quillet
