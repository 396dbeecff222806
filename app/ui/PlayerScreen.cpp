#include "app/ui/PlayerScreen.h"

#include "app/ui/EQView.h"
#include "app/ui/LoopControl.h"
#include "app/ui/PitchControl.h"
#include "app/ui/RegionControls.h"
#include "app/ui/SpeedControl.h"
#include "app/ui/TransportView.h"
#include "app/ui/WaveformPanel.h"
#include "app/ui/controls/Card.h"

#include <QGridLayout>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace quillet {
namespace {

constexpr int widthForTwoColumns = 900;
constexpr int leastWaveformCardHeight = 244;
/// From this height on the waveform gets a third of it.
constexpr double waveformShare = 0.34;

}  // namespace

PlayerScreen::PlayerScreen(AppState& state, AudioEngine& engine, PlaybackCommands& commands, const ThemeSource& source,
                           QWidget* parent)
    : QWidget(parent),
      m_waveform(cardAround(new WaveformPanel(state, commands, source), source)),
      m_scroll(new QScrollArea),
      m_grid(new QGridLayout)
{
    m_cards = { cardAround(new RegionControls(state, commands, source), source),
                cardAround(new TransportView(state, source), source),
                cardAround(new SpeedControl(state, commands, source), source),
                cardAround(new PitchControl(state, commands, source), source),
                cardAround(new LoopControl(state, source), source),
                cardAround(new EQView(state, engine, source), source) };
    m_waveform->setParent(this);
    auto* cards = new QWidget;
    m_grid->setSpacing(AppTheme::cardSpacing);
    auto* column = new QVBoxLayout(cards);
    column->addLayout(m_grid);
    column->addStretch();
    m_scroll->setParent(this);
    m_scroll->setWidget(cards);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    const auto leaveMargin = [this, column] {
        const bool scrolls = m_scroll->verticalScrollBar()->maximum() > 0;
        const int bar = scrolls ? m_scroll->verticalScrollBar()->sizeHint().width() : 0;
        column->setContentsMargins(0, 0, AppTheme::windowMargin - bar, AppTheme::windowMargin);
    };
    connect(m_scroll->verticalScrollBar(), &QScrollBar::rangeChanged, this, leaveMargin);
    leaveMargin();
    // The window's ground shows through.
    m_scroll->viewport()->setAutoFillBackground(false);
    cards->setAutoFillBackground(false);
}

Card* PlayerScreen::cardAround(QWidget* content, const ThemeSource& source)
{
    auto* card = new Card(source);
    auto* around = new QVBoxLayout(card);
    around->setContentsMargins(AppTheme::cardPadding, AppTheme::cardPadding - 2, AppTheme::cardPadding,
                               AppTheme::cardPadding - 2);
    around->addWidget(content);
    return card;
}

void PlayerScreen::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void PlayerScreen::arrange()
{
    const Columns columns = width() >= widthForTwoColumns ? Columns::two : Columns::one;
    if (columns != m_columns) {
        m_columns = columns;
        placeCards();
    }
    const int margin = AppTheme::windowMargin;
    const int contentWidth = std::min(width() - 2 * margin, AppTheme::widestContent);
    const int left = (width() - contentWidth) / 2;
    const int top = AppTheme::cardSpacing;
    const int waveformHeight = std::max(leastWaveformCardHeight, static_cast<int>(height() * waveformShare));
    m_waveform->setGeometry(margin, top, width() - 2 * margin, waveformHeight);
    const int below = top + waveformHeight + AppTheme::cardSpacing;
    // The scroll bar stands in the margin, beside the cards.
    m_scroll->setGeometry(left, below, contentWidth + margin, std::max(0, height() - below));
}

void PlayerScreen::placeCards()
{
    for (Card* card : m_cards)
        m_grid->removeWidget(card);
    if (m_columns == Columns::one) {
        for (std::size_t i = 0; i < m_cards.size(); ++i)
            m_grid->addWidget(m_cards[i], static_cast<int>(i), 0, 1, 2);
        return;
    }
    for (int i = 0; i < 4; ++i)
        m_grid->addWidget(m_cards[static_cast<std::size_t>(i)], i / 2, i % 2);
    m_grid->addWidget(m_cards[4], 2, 0, 1, 2);
    m_grid->addWidget(m_cards[5], 3, 0, 1, 2);
    m_grid->setColumnStretch(0, 1);
    m_grid->setColumnStretch(1, 1);
}

}  // namespace quillet
