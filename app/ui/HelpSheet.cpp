#include "app/ui/HelpSheet.h"

#include "app/ui/QuilletStyle.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <array>

namespace quillet {
namespace {

constexpr QSize minSize(520, 480);
constexpr QSize usualSize(600, 620);
constexpr int titlePixels = 24;
constexpr int keyColumnWidth = 100;

struct Section {
    const char* title;
    const char* content;
};

constexpr std::array sections{
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Getting Started"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "1. Press Cmd+O or click \"Open File...\" to load an audio file.\n"
                               "2. The waveform will appear after loading.\n"
                               "3. Drag on the waveform to select a region, or use the Start/End pickers below.\n"
                               "4. Press Space to play. The selected region loops when Loop is enabled.\n"
                               "5. Adjust Speed and Pitch as needed. Settings are saved automatically per file.") },
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Waveform"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "• Drag the orange lines to move the region start and end.\n"
                               "• Click and drag on empty space to draw a new region.\n"
                               "• Pinch to zoom in/out (1x–50x). Two-finger scroll to pan when zoomed.\n"
                               "• Use the +/- zoom buttons, Fit Track, and Fit Region buttons for quick navigation.") },
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Speed"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "• Range: 5%–300%. Pitch is preserved at all speeds.\n"
                               "• Click the value field, type a number, and press Enter.\n"
                               "• Prefix with + or - to adjust relative to the displayed value (e.g., \"+10\" adds 10%).\n"
                               "• Use the Step picker to set how much the +/- buttons move per click.\n"
                               "• Cmd+Left decreases speed, Cmd+Right increases speed.") },
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Pitch"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "• Range: -1200 to +1200 cents. 100 cents = 1 semitone.\n"
                               "• Click the value field, type a number (including negative), and press Enter.\n"
                               "• Cmd+Up raises pitch 1 cent, Cmd+Down lowers pitch 1 cent.\n"
                               "• Display is truncated to integer cents.") },
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "EQ"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "• Toggle the EQ on/off with the switch. Sliders are hidden when off.\n"
                               "• 5 bands: 60 Hz, 250 Hz, 1 kHz, 4 kHz, 12 kHz.\n"
                               "• Gain range: -12 to +12 dB, snapping to 0.5 dB increments.\n"
                               "• Knob turns accent-colored when a band is non-zero.\n"
                               "• Reset zeros all bands.") },
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Loop"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "• Toggle looping with Cmd+L or the Loop switch.\n"
                               "• When on, playback returns to the region start after reaching the end.\n"
                               "• Set a delay (seconds + milliseconds) to pause between iterations.") },
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Marks, Loops and Trainer"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "• [ and ] set the region's start and end where you hear it. With Shift that end moves 10 ms "
                               "outwards, with Alt inwards.\n"
                               "• Comma and period move the region by its own length, Backspace takes the whole song.\n"
                               "• Save Loop (Cmd+S) keeps the region under a name, with speed, pitch and trainer.\n"
                               "• Click a saved loop, or press Cmd+1 to Cmd+0: it begins when the present pass has ended, "
                               "with Alt at once.\n"
                               "• The trainer (Cmd+T) plays the loop at one speed after the other. A speed set by hand pauses "
                               "it.\n"
                               "• Cmd+P plays the saved loops as a list.\n"
                               "• Cmd+Z undoes, Cmd+E exports what you hear.") },
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Several Songs, a Closer Look"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "• Drop several songs or a folder: Cmd+Page Up and Cmd+Page Down go through them.\n"
                               "• Zoomed in, the waveform shows the sound itself. Follow keeps the play head in view.\n"
                               "• The Loops menu saves the loops to a file and loads them again, on another computer too.") },
    Section{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Per-File Settings"),
             QT_TRANSLATE_NOOP("quillet::HelpSheet",
                               "All settings (region, speed, pitch, EQ, loop) are saved automatically.\n"
                               "Settings are restored only when you open a file from the Recent menu.\n"
                               "Opening via \"Open File...\" always starts with defaults.") },
};

struct Shortcut {
    const char* key;
    const char* description;
};

constexpr std::array shortcuts{
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Space"), QT_TRANSLATE_NOOP("quillet::HelpSheet", "Play / Pause") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+O"), QT_TRANSLATE_NOOP("quillet::HelpSheet", "Open file") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+Left"),
              QT_TRANSLATE_NOOP("quillet::HelpSheet", "Decrease speed by step") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+Right"),
              QT_TRANSLATE_NOOP("quillet::HelpSheet", "Increase speed by step") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+Up"), QT_TRANSLATE_NOOP("quillet::HelpSheet", "Pitch up 1 cent") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+Down"),
              QT_TRANSLATE_NOOP("quillet::HelpSheet", "Pitch down 1 cent") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+L"), QT_TRANSLATE_NOOP("quillet::HelpSheet", "Toggle loop") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+R"),
              QT_TRANSLATE_NOOP("quillet::HelpSheet", "Stop and reset position") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "[ ]"),
              QT_TRANSLATE_NOOP("quillet::HelpSheet", "Region start, end here") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+S"), QT_TRANSLATE_NOOP("quillet::HelpSheet", "Save loop") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+1…0"),
              QT_TRANSLATE_NOOP("quillet::HelpSheet", "Call up a saved loop") },
    Shortcut{ QT_TRANSLATE_NOOP("quillet::HelpSheet", "Cmd+Z"), QT_TRANSLATE_NOOP("quillet::HelpSheet", "Undo") },
};

}  // namespace

QString withPlatformKeys(QString text)
{
#ifdef Q_OS_MACOS
    return text;
#else
    return text.replace(QLatin1String("Cmd+"), HelpSheet::tr("Ctrl+"));
#endif
}

HelpSheet::HelpSheet(const ThemeSource& source, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Help"));
    setWindowModality(Qt::WindowModal);
    setMinimumSize(minSize);
    auto* title = new Label(source, Label::Role::title, tr("Help"));
    title->setHeading(titlePixels);
    auto* done = new QPushButton(tr("Done"));
    done->setDefault(true);
    setButtonKind(*done, ButtonKind::accent);
    connect(done, &QAbstractButton::clicked, this, &QDialog::accept);
    auto* header = new QHBoxLayout;
    header->addWidget(title);
    header->addStretch();
    header->addWidget(done);

    auto* texts = new QWidget;
    auto* column = new QVBoxLayout(texts);
    column->setContentsMargins(0, 0, AppTheme::windowMargin, 0);
    column->setSpacing(6);
    for (const Section& text : sections)
        section(*column, tr(text.title), tr(text.content), source);
    addShortcuts(*column, source);
    column->addStretch();
    auto* scroll = new QScrollArea;
    scroll->setWidget(texts);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->viewport()->setAutoFillBackground(false);
    texts->setAutoFillBackground(false);
    auto* sheet = new QVBoxLayout(this);
    sheet->setContentsMargins(AppTheme::windowMargin, AppTheme::windowMargin, 8, AppTheme::windowMargin);
    sheet->setSpacing(AppTheme::cardSpacing);
    header->setContentsMargins(0, 0, 12, 0);
    sheet->addLayout(header);
    sheet->addWidget(scroll);
    resize(scaled(usualSize.width()), scaled(usualSize.height()));
}

void HelpSheet::section(QVBoxLayout& column, const QString& title, const QString& content, const ThemeSource& source)
{
    column.addWidget(new Label(source, Label::Role::title, title));
    if (!content.isEmpty()) {
        auto* text = new Label(source, Label::Role::text, withPlatformKeys(content));
        text->setWordWrap(true);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        column.addWidget(text);
        column.addSpacing(12);
    }
}

void HelpSheet::addShortcuts(QVBoxLayout& column, const ThemeSource& source)
{
    section(column, tr("Keyboard Shortcuts"), {}, source);
    auto* table = new QGridLayout;
    table->setColumnMinimumWidth(0, scaled(keyColumnWidth));
    table->setColumnStretch(1, 1);
    table->setVerticalSpacing(4);
    for (const Shortcut& shortcut : shortcuts)
        shortcutRow(*table, tr(shortcut.key), tr(shortcut.description), source);
    column.addLayout(table);
}

void HelpSheet::shortcutRow(QGridLayout& table, const QString& key, const QString& description, const ThemeSource& source)
{
    const int row = table.rowCount();
    auto* label = new Label(source, Label::Role::text, withPlatformKeys(key));
    label->setFont(numberFont(AppTheme::controlPixels));
    table.addWidget(label, row, 0);
    table.addWidget(new Label(source, Label::Role::text, description), row, 1);
}

}  // namespace quillet
