// The equaliser: its switch and five sliders.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/playback/AudioEngine.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <array>

class QHBoxLayout;
class QPushButton;

namespace quillet {

class Drawer;
class Label;
class Switch;
class VerticalSlider;

class EQView final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the view.
    EQView(AppState& state, AudioEngine& engine, const ThemeSource& source, QWidget* parent = nullptr);

private:
    struct Band {
        Label* gain;
        VerticalSlider* slider;
    };

    [[nodiscard]] Band addBand(QHBoxLayout& row, int band, const ThemeSource& source);
    void setGain(int band, double gainDb);
    void resetGains();
    void syncSwitch();
    void syncGains();

    AppState& m_state;
    AudioEngine& m_engine;
    Switch* m_switch;
    QPushButton* m_reset;
    Drawer* m_drawer;
    std::array<Band, EqualizerNode::bandCount> m_bands{};
};

}  // namespace quillet
