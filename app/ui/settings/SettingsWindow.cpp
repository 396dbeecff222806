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
    : QDialog(parent),
      m_view(new CacheSettingsView(services)),
      m_scroll(new QScrollArea)
{
    setWindowTitle(tr("Settings"));
    setModal(false);
    m_scroll->setWidget(m_view);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->viewport()->setAutoFillBackground(false);
    m_view->setAutoFillBackground(false);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_scroll);
    const QSize available = screen()->availableSize() - screenMargin;
    const int width = std::max(m_view->minimumSizeHint().width(), scaled(minSize.width()));
    setMinimumSize(QSize(width, minSize.height()).boundedTo(available));
    resize(QSize(std::max(width, scaled(usualSize.width())), scaled(usualSize.height())).boundedTo(available));
}

void SettingsWindow::present()
{
    show();
    raise();
    activateWindow();
}

void SettingsWindow::presentLanguage()
{
    present();
    m_view->language().setFocus();
    // Its place is known once it is laid out.
    QMetaObject::invokeMethod(this, [this] { m_scroll->ensureWidgetVisible(&m_view->language()); }, Qt::QueuedConnection);
}

}  // namespace quillet
