// The waveform of the open file with its zoom bar, bound to the state: what the view wishes goes into the state, what changes
// there into the view.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QHBoxLayout;

namespace quillet {

class Label;
class SymbolButton;
class WaveformView;

class WaveformPanel final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the panel.
    WaveformPanel(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

    void zoomIn();
    void zoomOut();
    void panLeft();
    void panRight();
    void fitTrack();
    void fitRegion();

private:
    [[nodiscard]] QHBoxLayout* zoomBar(const ThemeSource& source);
    void bindView();
    void applyTheme();
    void syncZoom();
    void setZoomAndPan(double zoomLevel, double panOffset);

    AppState& m_state;
    const ThemeSource& m_source;
    WaveformView* m_view;
    Label* m_zoom;
    SymbolButton* m_zoomOut;
    SymbolButton* m_zoomIn;
    SymbolButton* m_panLeft;
    SymbolButton* m_panRight;
};

}  // namespace quillet
