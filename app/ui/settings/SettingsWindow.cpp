#include "app/ui/settings/SettingsWindow.h"

#include "app/ui/controls/Fonts.h"

#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

namespace quillet {
namespace {

constexpr QSize minSize(480, 320);
constexpr QSize usualSize(680, 790);
/// Left of the screen around it.
constexpr QSize screenMargin(40, 60);

}  // namespace

SettingsWindow::SettingsWindow(const CacheSettingsView::Services& services, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Settings"));
    setModal(false);
    auto* scroll = new QScrollArea;
    scroll->setWidget(new CacheSettingsView(services));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->viewport()->setAutoFillBackground(false);
    scroll->widget()->setAutoFillBackground(false);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(scroll);
    const QSize available = screen()->availableSize() - screenMargin;
    const int width = std::max(scroll->widget()->minimumSizeHint().width(), scaled(minSize.width()));
    setMinimumSize(QSize(width, minSize.height()).boundedTo(available));
    resize(QSize(std::max(width, scaled(usualSize.width())), scaled(usualSize.height())).boundedTo(available));
}

void SettingsWindow::present()
{
    show();
    raise();
    activateWindow();
}

}  // namespace quillet
