// The separation of a song whose sheet is closed: how far it is, then that its stems are there, or why not. It starts playing
// nothing by itself, as the user may be playing.
// Threads: main thread.
#pragma once

#include "app/stems/StemSeparator.h"
#include "app/ui/Notice.h"

#include <functional>

namespace quillet {

class SeparationNotice final : public Notice {
    Q_OBJECT

public:
    struct Handlers {
        /// Opens the sheet again.
        std::function<void()> show;
        /// Plays the stems, if the song is open.
        std::function<void(const StemFolder::Stems& stems)> use;
        /// Whether it is.
        std::function<bool()> canUse;
    };

    /// `separator` outlives the notice.
    SeparationNotice(const ThemeSource& source, StemSeparator& separator, Handlers handlers, QWidget* parent = nullptr);

    /// While the sheet is in view the notice is not.
    void setSheetOpen(bool isOpen);
    /// What it says at the end has been heard.
    void dismiss();
    /// Shows whether the stems can be used: another song may be open now.
    void sync();

private:
    StemSeparator& m_separator;
    Handlers m_handlers;
    QPushButton& m_show;
    QPushButton& m_cancel;
    QPushButton& m_use;
    QPushButton& m_close;
    bool m_isSheetOpen = false;
    bool m_isDismissed = true;
};

}  // namespace quillet
