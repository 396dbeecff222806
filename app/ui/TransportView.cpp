#include "app/ui/TransportView.h"

#include "AppCore/TimeIntervalComponents.h"
#include "app/ui/TransportButtons.h"
#include "app/ui/controls/Fonts.h"

#include <QHBoxLayout>
#include <QLabel>

namespace quillet {
namespace {

/// The largest text of the window.
constexpr int positionPixels = 34;

}  // namespace

QString formattedPosition(double seconds)
{
    const TimeIntervalComponents parts = TimeIntervalComponents::fromSeconds(seconds);
    return QStringLiteral("%1:%2.%3")
        .arg(parts.minutes, 2, 10, QLatin1Char('0'))
        .arg(parts.seconds, 2, 10, QLatin1Char('0'))
        .arg(parts.milliseconds, 3, 10, QLatin1Char('0'));
}

TransportView::TransportView(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_play(new PlayButton(source)),
      m_hold(new HoldButton(source)),
      m_position(new QLabel)
{
    m_position->setFont(numberFont(positionPixels));
    m_position->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_position->setTextFormat(Qt::PlainText);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(20);
    row->addWidget(m_play);
    row->addWidget(m_hold);
    row->addStretch();
    row->addWidget(m_position);

    connect(m_play, &QAbstractButton::clicked, this, [this] { m_state.togglePlayPause(); });
    connect(m_hold, &QAbstractButton::clicked, this, [this] {
        m_state.toggleHold();
        syncButtons();
    });
    connect(&state, &AppState::isPlayingChanged, this, &TransportView::syncButtons);
    connect(&state, &AppState::holdEnabledChanged, this, &TransportView::syncButtons);
    connect(&state, &AppState::playbackPositionChanged, this, &TransportView::syncPosition);
    syncButtons();
    syncPosition();
}

void TransportView::syncButtons()
{
    m_play->setPlaying(m_state.isPlaying());
    m_hold->setChecked(m_state.holdEnabled());
}

void TransportView::syncPosition()
{
    const QString text = formattedPosition(m_state.playbackPosition());
    m_position->setText(text);
    m_position->setAccessibleName(tr("Position %1").arg(text));
}

}  // namespace quillet
