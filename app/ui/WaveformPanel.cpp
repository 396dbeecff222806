#include "app/ui/WaveformPanel.h"

#include "AppCore/WaveformZoomPan.h"
#include "app/ui/LoopStrip.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/controls/DecimalText.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/SymbolButton.h"
#include "app/waveform/WaveformView.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {
namespace {

constexpr int zoomTextWidth = 52;
constexpr int rulerPixels = 11;

}  // namespace

WaveformPanel::WaveformPanel(AppState& state, const ThemeSource& source, const Services& services, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_source(source),
      m_follow(services.follow),
      m_view(new WaveformView),
      m_details(services.details)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(10);
    column->addWidget(m_view, 1);
    column->addWidget(new LoopStrip(state, source));
    column->addLayout(zoomBar(source));
    bindView();
    bindDetail();
    bindFollowing();
    connect(&source, &ThemeSource::themeChanged, this, &WaveformPanel::applyTheme);
    applyTheme();
    syncZoom();
}

QHBoxLayout* WaveformPanel::zoomBar(const ThemeSource& source)
{
    const auto symbolButton = [&](const char* symbol, const QString& name, void (WaveformPanel::*action)()) {
        auto* button = new SymbolButton(source, QString::fromLatin1(symbol), name, ButtonKind::plain);
        button->setToolTip(name);
        connect(button, &QAbstractButton::clicked, this, action);
        return button;
    };
    const auto textButton = [&](const QString& text, void (WaveformPanel::*action)()) {
        auto* button = new QPushButton(text);
        button->setFocusPolicy(Qt::TabFocus);
        connect(button, &QAbstractButton::clicked, this, action);
        return button;
    };
    m_zoomOut = symbolButton("minus", tr("Zoom out"), &WaveformPanel::zoomOut);
    m_zoom = new Label(source, Label::Role::number, {});
    m_zoom->setFixedWidth(scaled(zoomTextWidth));
    m_zoom->setAlignment(Qt::AlignCenter);
    m_zoomIn = symbolButton("plus", tr("Zoom in"), &WaveformPanel::zoomIn);
    m_panLeft = symbolButton("chevron.left", tr("Pan left"), &WaveformPanel::panLeft);
    m_panRight = symbolButton("chevron.right", tr("Pan right"), &WaveformPanel::panRight);
    auto* bar = new QHBoxLayout;
    bar->setSpacing(8);
    for (QWidget* widget : std::initializer_list<QWidget*>{ m_zoomOut, m_zoom, m_zoomIn })
        bar->addWidget(widget);
    bar->addSpacing(8);
    bar->addWidget(textButton(tr("Fit Track"), &WaveformPanel::fitTrack));
    bar->addWidget(textButton(tr("Fit Region"), &WaveformPanel::fitRegion));
    auto* save = textButton(tr("Save Loop"), &WaveformPanel::saveLoop);
    save->setToolTip(tr("Keep the region under a name, with its speed and pitch"));
    bar->addSpacing(8);
    bar->addWidget(save);
    bar->addStretch();
    bar->addWidget(followButton());
    bar->addSpacing(8);
    bar->addWidget(m_panLeft);
    bar->addWidget(m_panRight);
    return bar;
}

QPushButton* WaveformPanel::followButton()
{
    auto* button = new QPushButton(tr("Follow"));
    button->setCheckable(true);
    setButtonKind(*button, ButtonKind::segment);
    button->setFocusPolicy(Qt::TabFocus);
    button->setToolTip(tr("Keep the play head in view while it plays"));
    button->setAccessibleName(tr("Follow the play head"));
    const auto sync = [this, button] { button->setChecked(m_follow.isOn()); };
    connect(button, &QAbstractButton::clicked, this, [this] { m_follow.toggle(); });
    connect(&m_follow, &FollowChoice::changed, button, sync);
    sync();
    return button;
}

void WaveformPanel::bindView()
{
    m_view->onRegionChange([this](const TimeRange& region) { m_state.setRegion(region); });
    m_view->onDragEnded([this] { m_state.restartRegion(); });
    m_view->onResignFocus([] {
        if (QWidget* focused = QApplication::focusWidget())
            focused->clearFocus();
    });
    m_view->onZoomChange([this](double zoom, double pan) { moveByHand(zoom, pan); });
    m_view->onWidthChange([this](double factor) {
        m_state.setPanOffset(m_state.panOffset() * factor);
        syncZoom();
    });

    const auto follow = [this](auto changed, auto&& copy) {
        connect(&m_state, changed, this, copy);
        copy();
    };
    follow(&AppState::waveformSamplesChanged, [this] { m_view->setSamples(m_state.waveformSamples()); });
    follow(&AppState::audioDurationChanged, [this] { m_view->setDuration(m_state.audioDuration()); });
    follow(&AppState::regionChanged, [this] { m_view->setRegion(m_state.region()); });
    follow(&AppState::playbackPositionChanged, [this] { m_view->setPlaybackPosition(m_state.playbackPosition()); });
    follow(&AppState::isPlayingChanged, [this] { m_view->setPlaying(m_state.isPlaying()); });
    follow(&AppState::speedChanged, [this] { m_view->setPlaybackRate(m_state.speed() / 100); });
    follow(&AppState::loopsChanged, [this] { syncSpans(); });
    m_view->onSpanClick([this](std::size_t span, bool atOnce) {
        m_state.callLoop(span, atOnce ? AppState::CallUp::atOnce : AppState::CallUp::atJoint);
    });
    follow(&AppState::zoomLevelChanged, [this] { syncZoom(); });
    follow(&AppState::panOffsetChanged, [this] { syncZoom(); });
}

// ---- Seen closely ----

void WaveformPanel::bindDetail()
{
    m_details.onChange([this](const SongPart& part) { m_view->setDetail(m_details.detail(), part); });
    const auto forget = [this] { m_details.setFile(m_state.audioFileURL()); };
    connect(&m_state, &AppState::audioFileURLChanged, this, forget);
    // The same file, opened again, may have been changed.
    connect(&m_state, &AppState::waveformSamplesChanged, this, forget);
    forget();
}

void WaveformPanel::lookClosely()
{
    // A song that is being opened comes first.
    const auto part = m_state.isLoaded() ? m_view->partInView() : std::nullopt;
    if (part)
        m_details.look(*part);
}

// ---- Following ----

void WaveformPanel::bindFollowing()
{
    connect(&m_state, &AppState::playbackPositionChanged, this, &WaveformPanel::turnPage);
    const auto restart = [this] {
        m_pages.reset();
        turnPage();
    };
    connect(&m_state, &AppState::isPlayingChanged, this, restart);
    connect(&m_follow, &FollowChoice::changed, this, restart);
}

void WaveformPanel::turnPage()
{
    if (!m_follow.isOn() || !m_state.isPlaying() || m_view->isDragging())
        return;
    if (const auto pan = m_pages.pan(m_view->coordinates(), m_state.playbackPosition()))
        m_state.setPanOffset(*pan);
}

void WaveformPanel::moveByHand(double zoomLevel, double panOffset)
{
    const TimeRange before = timesInView(m_view->coordinates());
    setZoomAndPan(zoomLevel, panOffset);
    if (m_state.isPlaying())
        m_pages.handMoved(before, m_view->coordinates(), m_state.playbackPosition());
}

void WaveformPanel::applyTheme()
{
    const AppTheme& theme = m_source.theme();
    m_view->setLook({ { AppTheme::waveformSelected, theme.waveformUnselected },
                      theme.card,
                      AppTheme::waveformRegionStart,
                      AppTheme::waveformRegionEnd,
                      AppTheme::waveformPlayhead,
                      theme.secondaryText,
                      withOpacity(theme.secondaryText, 0.6),
                      theme.accentText,
                      numberFont(rulerPixels) });
}

// ---- Zoom ----

void WaveformPanel::setZoomAndPan(double zoomLevel, double panOffset)
{
    m_state.setZoomLevel(zoomLevel);
    m_state.setPanOffset(panOffset);
}

void WaveformPanel::syncZoom()
{
    const double zoom = m_state.zoomLevel();
    m_view->setZoomAndPan(zoom, m_state.panOffset());
    m_zoom->setText(decimalText(zoom) + QLatin1Char('x'));
    m_zoom->setAccessibleName(tr("Zoom %1 times").arg(decimalText(zoom)));
    m_zoomOut->setEnabled(zoom > WaveformZoomPan::min);
    m_zoomIn->setEnabled(zoom < WaveformZoomPan::max);
    m_panLeft->setEnabled(m_state.panOffset() > 0);
    m_panRight->setEnabled(m_state.panOffset() < (zoom - 1) * m_view->waveformWidth());
    lookClosely();
}

void WaveformPanel::zoomIn()
{
    const WaveformZoomPan::Extent extent{ m_state.audioDuration(), m_view->waveformWidth() };
    const auto next = WaveformZoomPan::zoomIn(m_state.zoomLevel(), extent, m_state.regionStart());
    setZoomAndPan(next.zoom, next.pan);
}

void WaveformPanel::zoomOut()
{
    const WaveformZoomPan::Extent extent{ m_state.audioDuration(), m_view->waveformWidth() };
    const auto next = WaveformZoomPan::zoomOut(m_state.zoomLevel(), extent, m_state.regionStart());
    setZoomAndPan(next.zoom, next.pan);
}

void WaveformPanel::panLeft()
{
    moveByHand(m_state.zoomLevel(), WaveformZoomPan::panLeft(m_state.panOffset(), m_view->waveformWidth()));
}

void WaveformPanel::panRight()
{
    moveByHand(m_state.zoomLevel(),
               WaveformZoomPan::panRight({ m_state.zoomLevel(), m_state.panOffset() }, m_view->waveformWidth()));
}

void WaveformPanel::saveLoop() { m_state.saveLoop(); }

void WaveformPanel::syncSpans()
{
    std::vector<WaveformSpan> spans;
    for (const NamedLoop& loop : m_state.loops())
        spans.push_back({ loop.region, AppTheme::loopColors[static_cast<std::size_t>(loop.color)] });
    m_view->setSpans(std::move(spans));
}

void WaveformPanel::fitTrack() { setZoomAndPan(1, 0); }

void WaveformPanel::fitRegion()
{
    const WaveformZoomPan::Extent extent{ m_state.audioDuration(), m_view->waveformWidth() };
    if (const auto fitted = WaveformZoomPan::fitRegion(m_state.regionStart(), m_state.regionEnd(), extent))
        setZoomAndPan(fitted->zoom, fitted->pan);
}

}  // namespace quillet
