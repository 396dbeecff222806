#include "app/ui/TransportView.h"

#include "AppCore/TimeIntervalComponents.h"
#include "app/ui/TransportButtons.h"
#include "app/ui/controls/Fonts.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHBoxLayout>
#include <QLabel>

namespace quillet {
namespace {

/// The largest text of the window.
constexpr int positionPixels = 34;

/// Says where the play head is to a screen reader that asks. A label tells of each change, twenty times a second.
class AccessiblePosition final : public QAccessibleWidget {
public:
    explicit AccessiblePosition(QLabel* label)
        : QAccessibleWidget(label, QAccessible::StaticText)
    {
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        if (kind != QAccessible::Name)
            return QAccessibleWidget::text(kind);
        return TransportView::tr("Position %1").arg(static_cast<const QLabel*>(widget())->text());
    }
};

class PositionLabel final : public QLabel {
public:
    PositionLabel()
    {
        static const bool installed = [] {
            QAccessible::installFactory([](const QString&, QObject* object) -> QAccessibleInterface* {
                auto* label = dynamic_cast<PositionLabel*>(object);
                return label != nullptr ? new AccessiblePosition(label) : nullptr;
            });
            return true;
        }();
        Q_UNUSED(installed)
        // With a name of its own it keeps quiet when its text changes.
        setAccessibleName(TransportView::tr("Position"));
    }
};

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
      m_position(new PositionLabel)
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

void TransportView::syncPosition() { m_position->setText(formattedPosition(m_state.playbackPosition())); }

}  // namespace quillet
