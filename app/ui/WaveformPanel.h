// The waveform of the open file with its zoom bar, bound to the state: what the view wishes goes into the state, what changes
// there into the view. It has the sound read where the view shows it closely, and turns the pages that follow the play head.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/FollowChoice.h"
#include "app/ui/ThemeSource.h"
#include "app/waveform/DetailLoader.h"
#include "app/waveform/PageFollower.h"

#include <QWidget>

class QHBoxLayout;
class QPushButton;

namespace quillet {

class Label;
class SymbolButton;
class WaveformView;

class WaveformPanel final : public QWidget {
    Q_OBJECT

public:
    struct Services {
        DetailLoader::Resources details;
        FollowChoice& follow;
    };

    /// All outlive the panel.
    WaveformPanel(AppState& state, const ThemeSource& source, const Services& services, QWidget* parent = nullptr);

    void zoomIn();
    void zoomOut();
    void panLeft();
    void panRight();
    void fitTrack();
    void fitRegion();
    void saveLoop();

private:
    [[nodiscard]] QHBoxLayout* zoomBar(const ThemeSource& source);
    [[nodiscard]] QPushButton* followButton();
    void bindView();
    void bindDetail();
    void bindFollowing();
    void applyTheme();
    void syncZoom();
    void syncSpans();
    void setZoomAndPan(double zoomLevel, double panOffset);
    void moveByHand(double zoomLevel, double panOffset);
    void lookClosely();
    void turnPage();

    AppState& m_state;
    const ThemeSource& m_source;
    FollowChoice& m_follow;
    PageFollower m_pages;
    WaveformView* m_view;
    DetailLoader m_details;
    Label* m_zoom;
    SymbolButton* m_zoomOut;
    SymbolButton* m_zoomIn;
    SymbolButton* m_panLeft;
    SymbolButton* m_panRight;
};

}  // namespace quillet
