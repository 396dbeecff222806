// A file that is being written: how far it is, a button to stop it, then where it is.
// Threads: main thread.
#pragma once

#include "app/export/BackgroundRender.h"
#include "app/ui/Notice.h"

namespace quillet {

class ExportNotice final : public Notice {
    Q_OBJECT

public:
    /// Begins at once; destroys itself when it is closed or the work is stopped, and the end of the program stops it too.
    ExportNotice(const ThemeSource& source, const BackgroundRender::Services& services, const RenderOptions& options,
                 QWidget* parent = nullptr);

private:
    void showProgress(int percent);
    void showEnd(const std::expected<RenderEnd, std::string>& end);

    FilePath m_output;
    QPushButton& m_stop;
    BackgroundRender m_render;
};

}  // namespace quillet
