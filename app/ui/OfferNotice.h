// Offers the settings that the open song was practised with before, while they are on offer.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/Notice.h"

namespace quillet {

class OfferNotice final : public Notice {
    Q_OBJECT

public:
    /// Both outlive the notice.
    OfferNotice(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);
};

}  // namespace quillet
