// Where a flow of questions and strips shows itself: the main window, as a flow sees it.
// Threads: main thread.
#pragma once

#include <functional>

class QDialog;
class QWidget;

namespace quillet {

class Notice;

struct FlowHost {
    QWidget& window;
    /// Opens a sheet before the window.
    std::function<void(QDialog& sheet)> openSheet;
    /// Places a strip under the toolbar.
    std::function<void(Notice& notice)> addNotice;
};

}  // namespace quillet
