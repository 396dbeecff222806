// The equaliser: its switch and five sliders.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"
#include "platform/audio/AudioGraph.h"

#include <QWidget>

#include <array>

class QHBoxLayout;
class QPushButton;

namespace quillet {

class Choice;
class Drawer;
class Label;
class Switch;
class VerticalSlider;

class EQView final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the view.
    EQView(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

private:
    struct Band {
        Label* gain;
        VerticalSlider* slider;
    };

    [[nodiscard]] Band addBand(QHBoxLayout& row, int band, const ThemeSource& source);
    void resetGains();
    void syncSwitch();
    void syncChannels();
    void syncGains();

    AppState& m_state;
    Switch* m_switch;
    Choice* m_channels;
    QPushButton* m_reset;
    Drawer* m_drawer;
    std::array<Band, EqualizerNode::bandCount> m_bands{};
};

}  // namespace quillet
