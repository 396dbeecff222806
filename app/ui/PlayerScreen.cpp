#include "app/ui/PlayerScreen.h"

#include "app/ui/EQView.h"
#include "app/ui/LoopControl.h"
#include "app/ui/PitchControl.h"
#include "app/ui/RegionControls.h"
#include "app/ui/SpeedControl.h"
#include "app/ui/StemControlsView.h"
#include "app/ui/TransportView.h"
#include "app/ui/controls/Card.h"
#include "app/ui/controls/Fonts.h"

#include <QHBoxLayout>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <initializer_list>

namespace quillet {
namespace {

constexpr int widthForTwoColumns = 900;
constexpr int widthForWidePage = 1400;
/// Of the column beside the waveform on a wide page.
constexpr int sideWidth = 480;
constexpr int minWaveformCardHeight = 244;

/// The cards side by side, each as high as the highest.
QHBoxLayout* rowOf(std::initializer_list<Card*> cards)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(AppTheme::cardSpacing);
    for (Card* card : cards)
        row->addWidget(card, 1);
    return row;
}

/// Takes the rows out; the cards stay.
void clear(QVBoxLayout& column)
{
    while (QLayoutItem* item = column.takeAt(0)) {
        if (QLayout* row = item->layout())
            while (const QLayoutItem* card = row->takeAt(0))
                delete card;
        delete item;
    }
}

}  // namespace

PlayerScreen::PlayerScreen(AppState& state, const ThemeSource& source, const WaveformPanel::Services& waveform, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_waveform(cardAround(new WaveformPanel(state, source, waveform), source)),
      m_stems(cardAround(new StemControlsView(state, source), source)),
      m_region(cardAround(new RegionControls(state, source), source)),
      m_transport(cardAround(new TransportView(state, source), source)),
      m_speed(cardAround(new SpeedControl(state, source), source)),
      m_pitch(cardAround(new PitchControl(state, source), source)),
      m_loop(cardAround(new LoopControl(state, source), source)),
      m_equalizer(cardAround(new EQView(state, source), source)),
      m_scroll(new QScrollArea(this)),
      m_controls(new QWidget),
      m_column(new QVBoxLayout(m_controls)),
      m_below(new QWidget(this)),
      m_belowColumn(new QVBoxLayout(m_below))
{
    m_waveform->setParent(this);
    m_waveform->lower();
    for (QVBoxLayout* column : { m_column, m_belowColumn })
        column->setSpacing(AppTheme::cardSpacing);
    m_belowColumn->setContentsMargins(0, 0, 0, 0);
    m_scroll->setWidget(m_controls);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    const auto leaveMargin = [this] {
        const bool scrolls = m_scroll->verticalScrollBar()->maximum() > 0;
        const int bar = scrolls ? m_scroll->verticalScrollBar()->sizeHint().width() : 0;
        m_column->setContentsMargins(0, 0, AppTheme::windowMargin - bar, AppTheme::windowMargin);
    };
    connect(m_scroll->verticalScrollBar(), &QScrollBar::rangeChanged, this, leaveMargin);
    leaveMargin();
    // The window's ground shows through.
    m_scroll->viewport()->setAutoFillBackground(false);
    m_controls->setAutoFillBackground(false);
    // What opens and closes among the controls changes what is left for the waveform.
    m_controls->installEventFilter(this);
    m_below->installEventFilter(this);
    connect(&state, &AppState::stemSessionChanged, this, &PlayerScreen::syncStems);
    syncStems();
}

void PlayerScreen::syncStems() { m_stems->setVisible(m_state.stemSession().has_value()); }

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

bool PlayerScreen::eventFilter(QObject* watched, QEvent* event)
{
    if ((watched == m_controls || watched == m_below) && event->type() == QEvent::LayoutRequest)
        QMetaObject::invokeMethod(this, &PlayerScreen::arrange, Qt::QueuedConnection);
    return QWidget::eventFilter(watched, event);
}

void PlayerScreen::arrange()
{
    const Page page = width() >= scaled(widthForWidePage) ? Page::wide
        : width() >= scaled(widthForTwoColumns)           ? Page::usual
                                                          : Page::narrow;
    if (std::exchange(m_page, page) != page)
        placeCards();
    const int margin = AppTheme::windowMargin;
    const int top = AppTheme::cardSpacing;
    if (page == Page::wide) {
        const int side = scaled(sideWidth);
        const int mainWidth = width() - 2 * margin - AppTheme::cardSpacing - side;
        const int below = m_belowColumn->sizeHint().height();
        const int waveformHeight = std::max(minWaveformCardHeight, height() - top - AppTheme::cardSpacing - below - margin);
        m_waveform->setGeometry(margin, top, mainWidth, waveformHeight);
        m_below->setGeometry(margin, top + waveformHeight + AppTheme::cardSpacing, mainWidth, below);
        m_scroll->setGeometry(margin + mainWidth + AppTheme::cardSpacing, top, side + margin, height() - top);
        return;
    }
    const int contentWidth = std::min(width() - 2 * margin, scaled(AppTheme::maxContentWidth));
    const int left = (width() - contentWidth) / 2;
    // What the controls leave is the waveform's.
    const int waveformHeight =
        std::max(minWaveformCardHeight, height() - top - AppTheme::cardSpacing - m_column->sizeHint().height());
    m_waveform->setGeometry(margin, top, width() - 2 * margin, waveformHeight);
    const int below = top + waveformHeight + AppTheme::cardSpacing;
    // The scroll bar stands in the margin, beside the cards.
    m_scroll->setGeometry(left, below, contentWidth + margin, std::max(0, height() - below));
}

void PlayerScreen::placeCards()
{
    clear(*m_column);
    clear(*m_belowColumn);
    m_below->setVisible(m_page == Page::wide);
    // Side by side they are as high as their neighbour, one over the other as high as they need to be.
    const auto height = m_page == Page::usual ? QSizePolicy::Preferred : QSizePolicy::Maximum;
    for (Card* card : { m_speed, m_pitch, m_loop, m_equalizer })
        card->setSizePolicy(QSizePolicy::Preferred, height);
    switch (m_page) {
    case Page::wide:
        m_belowColumn->addWidget(m_stems);
        m_belowColumn->addLayout(rowOf({ m_region, m_transport }));
        for (Card* card : { m_speed, m_pitch, m_loop, m_equalizer })
            m_column->addWidget(card);
        break;
    case Page::usual:
        m_column->addWidget(m_stems);
        m_column->addLayout(rowOf({ m_region, m_transport }));
        m_column->addLayout(rowOf({ m_speed, m_pitch }));
        m_column->addLayout(rowOf({ m_loop, m_equalizer }));
        break;
    case Page::narrow:
    case Page::unknown:
        for (Card* card : { m_stems, m_region, m_transport, m_speed, m_pitch, m_loop, m_equalizer })
            m_column->addWidget(card);
    }
    m_column->addStretch();
}

}  // namespace quillet
