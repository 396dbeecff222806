// From the wish to export the song as it is heard to the strip that shows how far that is: asks what and as which kind of file,
// asks for the folder, and begins.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/export/BackgroundRender.h"
#include "app/ui/FlowHost.h"
#include "app/ui/ThemeSource.h"

#include <QObject>

#include <memory>

namespace quillet {

class ExportFlow final : public QObject {
    Q_OBJECT

public:
    enum class Part { region, song, list };
    struct Wish {
        Part part = Part::region;
        std::int64_t passes = 1;
        /// With its dot.
        std::string extension = ".wav";
    };

    /// All outlive the flow, and the background's jobs that it has started.
    struct Services {
        AppState& state;
        BackgroundRender::Services render;
        const ThemeSource& theme;
    };
    ExportFlow(const Services& services, FlowHost host);

    /// Does nothing without a song.
    void ask();
    /// Writes what is heard now into a new file of that folder.
    void exportTo(const FilePath& folder, const Wish& wish);

private:
    void chooseFolder(const Wish& wish);
    [[nodiscard]] PlaybackOptions heard(const Wish& wish) const;

    Services m_services;
    FlowHost m_host;
    /// Late answers find out by it that the flow is gone.
    std::shared_ptr<ExportFlow*> m_self = std::make_shared<ExportFlow*>(this);
};

}  // namespace quillet
