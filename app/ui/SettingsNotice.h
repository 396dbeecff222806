// Says, for as long as it is so, that the settings cannot be saved and why; and that their file was damaged and moved aside,
// until the user has read it.
// Threads: main thread.
#pragma once

#include "app/ui/Notice.h"
#include "platform/defaults/DefaultsHealth.h"

namespace quillet {

class SettingsNotice final : public Notice {
    Q_OBJECT

public:
    explicit SettingsNotice(const ThemeSource& source, QWidget* parent = nullptr);

    void setHealth(const DefaultsHealth& health);

private:
    void sync();

    DefaultsHealth m_health;
    /// What the user has read of already.
    std::optional<FilePath> m_readOf;
    QPushButton* m_close;
};

}  // namespace quillet
