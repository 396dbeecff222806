#include "app/ui/OfferNotice.h"

#include <QPushButton>

namespace quillet {

OfferNotice::OfferNotice(AppState& state, const ThemeSource& source, QWidget* parent)
    : Notice(source, tr("You have practised this song before."), parent)
{
    connect(&addButton(tr("Restore its settings")), &QAbstractButton::clicked, this,
            [&state] { state.restoreOfferedSettings(); });
    connect(&addButton(tr("Dismiss")), &QAbstractButton::clicked, this, [&state] { state.dismissOfferedSettings(); });
    const auto sync = [this, &state] { setVisible(state.offeredSettings().has_value()); };
    connect(&state, &AppState::offeredSettingsChanged, this, sync);
    sync();
}

}  // namespace quillet
