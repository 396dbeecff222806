#include "app/ui/ExportFlow.h"

#include "app/export/OutputFile.h"
#include "app/ui/ExportNotice.h"
#include "app/ui/FileNames.h"
#include "app/ui/FilePanel.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/controls/Choice.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/TimePickerField.h"

#include <QDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <utility>

namespace quillet {
namespace {

constexpr int titlePixels = 18;
constexpr int sheetWidth = 420;
constexpr std::int64_t maxPasses = 99;

struct Format {
    const char* title;
    const char* extension;
};
constexpr std::array formats{
    Format{ "WAV (32 bit)", ".wav" },     Format{ "FLAC (24 bit)", ".flac" },     Format{ "MP3 (256 kbit/s)", ".mp3" },
    Format{ "M4A (256 kbit/s)", ".m4a" }, Format{ "Opus (192 kbit/s)", ".opus" },
};

}  // namespace

ExportFlow::ExportFlow(const Services& services, FlowHost host)
    : m_services(services),
      m_host(std::move(host))
{
}

void ExportFlow::ask()
{
    const AppState& state = m_services.state;
    if (!state.isLoaded())
        return;
    const ThemeSource& theme = m_services.theme;
    auto* sheet = new QDialog(&m_host.window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    sheet->setWindowTitle(tr("Export"));
    sheet->setFixedWidth(scaled(sheetWidth));
    auto* title = new Label(theme, Label::Role::title, tr("Export as Heard"));
    title->setHeading(titlePixels);
    auto* note =
        new Label(theme, Label::Role::secondary,
                  tr("With the present speed, pitch, equalizer, channels and stems. A list of loops has the loops’ own "
                     "speeds and pitches."));
    note->setWordWrap(true);
    auto* part = new Choice(tr("What is exported"));
    part->addItem(tr("Region"), static_cast<int>(Part::region));
    part->addItem(tr("Whole Song"), static_cast<int>(Part::song));
    if (!state.loops().empty())
        part->addItem(tr("Loops as a List"), static_cast<int>(Part::list));
    auto* passes = new TimePickerField(theme, tr("times"), tr("How often it is played"), { 1, maxPasses });
    passes->setValue(1);
    auto* format = new Choice(tr("Kind of file"));
    for (const Format& each : formats)
        format->addItem(QString::fromLatin1(each.title), QString::fromLatin1(each.extension));
    auto* form = new QFormLayout;
    form->setHorizontalSpacing(16);
    form->setVerticalSpacing(12);
    const auto add = [&](const QString& caption, QWidget* field) {
        form->addRow(new Label(theme, Label::Role::text, caption), field);
    };
    add(tr("What"), part);
    add(tr("How often"), passes);
    add(tr("File"), format);
    auto* cancel = new QPushButton(tr("Cancel"));
    auto* choose = new QPushButton(tr("Choose Folder…"));
    choose->setDefault(true);
    setButtonKind(*choose, ButtonKind::accent);
    connect(cancel, &QAbstractButton::clicked, sheet, &QDialog::reject);
    connect(choose, &QAbstractButton::clicked, sheet, &QDialog::accept);
    connect(sheet, &QDialog::accepted, this, [this, part, passes, format] {
        chooseFolder({ static_cast<Part>(part->currentData().toInt()), passes->value(),
                       format->currentData().toString().toStdString() });
    });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancel);
    buttons->addWidget(choose);
    auto* column = new QVBoxLayout(sheet);
    column->setContentsMargins(AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin);
    column->setSpacing(AppTheme::cardSpacing);
    column->addWidget(title);
    column->addWidget(note);
    column->addLayout(form);
    column->addLayout(buttons);
    m_host.openSheet(*sheet);
}

void ExportFlow::chooseFolder(const Wish& wish)
{
    const FilePath music = pathOf(QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
    // It goes with the window, as the flow does.
    new FilePanel(
        m_host.window, { tr("Export"), music, true, tr("Export"), {} },
        [this, wish](const std::vector<FilePath>& folders) { exportTo(folders.front(), wish); }, m_host.openSheet);
}

/// What sounds now, for a playing of its own.
PlaybackOptions ExportFlow::heard(const Wish& wish) const
{
    const AppState& state = m_services.state;
    PlaybackOptions options;
    options.input = *state.audioFileURL();
    if (wish.part == Part::region) {
        options.fromSeconds = state.regionStart();
        options.toSeconds = state.regionEnd();
    } else if (wish.part == Part::list) {
        options.loops = state.loops();
    }
    options.passes = static_cast<int>(wish.passes);
    options.delaySeconds =
        static_cast<double>(state.loopDelaySeconds()) + static_cast<double>(state.loopDelayMilliseconds()) / 1000;
    options.speedPercent = state.speed();
    options.pitchCents = state.pitch();
    options.channels = state.channels();
    if (state.eqEnabled()) {
        options.equalizerGainsDb.emplace();
        std::ranges::copy(state.eqGains(), options.equalizerGainsDb->begin());
    }
    if (const auto& session = state.stemSession()) {
        options.stemVolumes.emplace();
        for (const StemSession::Stem& stem : session->stems) {
            options.stems[stem.key] = stem.fileURL;
            (*options.stemVolumes)[stem.key] = state.stemMix().heardVolume(stem, *session);
        }
    }
    return options;
}

void ExportFlow::exportTo(const FilePath& folder, const Wish& wish)
{
    // Another song may have been opened meanwhile.
    if (!m_services.state.isLoaded())
        return;
    RenderOptions options{ heard(wish), {} };
    std::string name = options.playback.input.stem().native();
    if (options.playback.speedPercent != 100 && wish.part != Part::list)
        name += " " + std::to_string(static_cast<int>(options.playback.speedPercent)) + "%";
    m_services.render.background.run([&scheduler = m_services.render.scheduler, self = std::weak_ptr(m_self), options,
                                      wanted = folder / (name + wish.extension)]() mutable {
        options.output = freeName(wanted);
        scheduler.post([self, options] {
            if (const auto flow = self.lock())
                (*flow)->m_host.addNotice(*new ExportNotice((*flow)->m_services.theme, (*flow)->m_services.render, options));
        });
    });
}

}  // namespace quillet
