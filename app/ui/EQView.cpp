#include "app/ui/EQView.h"

#include "app/ui/controls/Choice.h"
#include "app/ui/controls/Drawer.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/Switch.h"
#include "app/ui/controls/ValueRow.h"
#include "app/ui/controls/VerticalSlider.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace quillet {
namespace {

constexpr std::array<const char*, EqualizerNode::bandCount> frequencies{
    QT_TRANSLATE_NOOP("quillet::EQView", "60Hz"),  QT_TRANSLATE_NOOP("quillet::EQView", "250Hz"),
    QT_TRANSLATE_NOOP("quillet::EQView", "1kHz"),  QT_TRANSLATE_NOOP("quillet::EQView", "4kHz"),
    QT_TRANSLATE_NOOP("quillet::EQView", "12kHz"),
};

struct ChannelChoice {
    ChannelMode mode;
    const char* label;
};

constexpr std::array channelChoices{
    ChannelChoice{ ChannelMode::stereo, QT_TRANSLATE_NOOP("quillet::EQView", "Stereo") },
    ChannelChoice{ ChannelMode::left, QT_TRANSLATE_NOOP("quillet::EQView", "Left") },
    ChannelChoice{ ChannelMode::right, QT_TRANSLATE_NOOP("quillet::EQView", "Right") },
    ChannelChoice{ ChannelMode::mono, QT_TRANSLATE_NOOP("quillet::EQView", "Mono") },
    ChannelChoice{ ChannelMode::sides, QT_TRANSLATE_NOOP("quillet::EQView", "No Middle") },
};

}  // namespace

EQView::EQView(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_switch(new Switch(source, tr("EQ"))),
      m_channels(new Choice(tr("Channels"))),
      m_reset(new QPushButton(tr("Reset")))
{
    m_reset->setAccessibleName(tr("Reset EQ"));
    for (const ChannelChoice& choice : channelChoices)
        m_channels->addItem(tr(choice.label), static_cast<int>(choice.mode));
    m_channels->setToolTip(
        tr("Which channels are heard. “No Middle” leaves out what both sides have alike, as voices often are."));
    auto* caption = new Label(source, Label::Role::title, tr("EQ"));
    caption->setFixedWidth(ValueRow::titleWidth());
    auto* header = new QHBoxLayout;
    header->setSpacing(8);
    header->addWidget(caption);
    header->addWidget(m_switch);
    header->addStretch();
    header->addWidget(m_channels);
    header->addWidget(m_reset);
    auto* columns = new QWidget;
    auto* bands = new QHBoxLayout(columns);
    bands->setContentsMargins(0, 8, 0, 0);
    for (int band = 0; band < EqualizerNode::bandCount; ++band)
        m_bands[static_cast<std::size_t>(band)] = addBand(*bands, band, source);
    m_drawer = new Drawer(columns);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(header);
    column->addWidget(m_drawer);

    connect(m_switch, &QAbstractButton::clicked, this, [this](bool isOn) { m_state.setEqEnabled(isOn); });
    connect(m_reset, &QAbstractButton::clicked, this, &EQView::resetGains);
    connect(m_channels, &QComboBox::activated, this,
            [this](int place) { m_state.setChannels(channelChoices[static_cast<std::size_t>(place)].mode); });
    connect(&state, &AppState::channelsChanged, this, &EQView::syncChannels);
    connect(&state, &AppState::isStereoChanged, this, &EQView::syncChannels);
    connect(&state, &AppState::eqEnabledChanged, this, &EQView::syncSwitch);
    connect(&state, &AppState::eqGainsChanged, this, &EQView::syncGains);
    syncSwitch();
    syncGains();
    syncChannels();
}

EQView::Band EQView::addBand(QHBoxLayout& row, int band, const ThemeSource& source)
{
    const QString frequency = tr(frequencies[static_cast<std::size_t>(band)]);
    const Band made{ new Label(source, Label::Role::number, {}),
                     new VerticalSlider(source, tr("EQ gain at %1").arg(frequency)) };
    made.slider->onMove([this, band](double gainDb) { m_state.setEqGain(static_cast<std::size_t>(band), gainDb); });
    auto* column = new QVBoxLayout;
    column->setSpacing(6);
    column->addWidget(made.gain, 0, Qt::AlignHCenter);
    column->addWidget(made.slider, 0, Qt::AlignHCenter);
    column->addWidget(new Label(source, Label::Role::secondary, frequency), 0, Qt::AlignHCenter);
    row.addLayout(column, 1);
    return made;
}

void EQView::resetGains() { m_state.setEqGains(std::vector<double>(m_bands.size(), 0.0)); }

void EQView::syncSwitch()
{
    m_switch->setChecked(m_state.eqEnabled());
    m_drawer->setOpen(m_state.eqEnabled());
}

/// A song of one channel has nothing to choose.
void EQView::syncChannels()
{
    m_channels->setCurrentIndex(m_channels->findData(static_cast<int>(m_state.channels())));
    m_channels->setVisible(m_state.isStereo());
}

void EQView::syncGains()
{
    const auto& gains = m_state.eqGains();
    for (std::size_t band = 0; band < m_bands.size() && band < gains.size(); ++band) {
        m_bands[band].slider->setGain(gains[band]);
        m_bands[band].gain->setText(gainLabel(gains[band]));
        m_bands[band].gain->setRole(gains[band] != 0 ? Label::Role::accentNumber : Label::Role::number);
    }
    m_reset->setEnabled(std::ranges::any_of(gains, [](double gain) { return gain != 0; }));
}

}  // namespace quillet
