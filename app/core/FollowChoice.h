// Whether the zoomed waveform follows the play head: one choice for all songs, kept in the user's defaults domain. It moves
// nothing itself.
// Threads: main thread.
#pragma once

#include "platform/defaults/DefaultsDomain.h"

#include <QObject>

namespace quillet {

class FollowChoice final : public QObject {
    Q_OBJECT

public:
    /// `defaults` outlives it.
    explicit FollowChoice(DefaultsDomain& defaults, QObject* parent = nullptr);

    /// Off until it is chosen.
    [[nodiscard]] bool isOn() const { return m_isOn; }
    void toggle();

Q_SIGNALS:
    void changed();

private:
    DefaultsDomain& m_defaults;
    bool m_isOn;
};

}  // namespace quillet
