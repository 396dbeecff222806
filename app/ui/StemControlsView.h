// The stems of the open song: one tile for each, with its name, how loud it is, whether it is muted, and whether it is listened
// to alone. In view only while there are stems.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <string>
#include <vector>

class QGridLayout;
class QPushButton;

namespace quillet {

class Fader;
class Label;

class StemControlsView final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the view.
    StemControlsView(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Tile {
        std::string key;
        QWidget* widget;
        Label* symbol;
        Label* name;
        Label* decibels;
        Fader* volume;
        QPushButton* mute;
        QPushButton* solo;
    };

    [[nodiscard]] Tile makeTile(const StemSession::Stem& stem);
    void syncSession();
    void sync();
    void arrange();

    AppState& m_state;
    const ThemeSource& m_source;
    QGridLayout* m_grid;
    std::vector<Tile> m_tiles;
    int m_columns = 0;
};

}  // namespace quillet
