#include "app/ui/MainWindow.h"

#include "app/core/Commands.h"
#include "app/ui/KeyResponderView.h"
#include "app/ui/ToolBar.h"
#include "platform/base/Require.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QScreen>

#include <map>

namespace quillet {
namespace {

constexpr QSize leastContentSize(680, 580);
constexpr QSize usualSize(1000, 900);
constexpr const char* placeKey = "QLT.windowGeometry";

}  // namespace

MainWindow::MainWindow(const ContentView::Services& services, DefaultsDomain& defaults)
    : m_services(services),
      m_defaults(defaults)
{
    setWindowTitle(QStringLiteral("Quillet"));
    setMinimumSize(leastContentSize);
    restorePlace();
}

void MainWindow::populate()
{
    REQUIRE(m_content == nullptr);
    m_content = new ContentView(m_services);
    m_content->setMinimumSize(leastContentSize);
    buildMenus();
    setCentralWidget(m_content);
    auto* responder = new KeyResponderView(m_services.state, m_content);
    responder->setGeometry(0, 0, 0, 0);
    responder->show();
}

void MainWindow::buildMenus()
{
    AppState& state = m_services.state;
    Notifications& notifications = m_services.notifications;
    std::map<QString, QMenu*> menus;
    // Shortcuts hold in every window of the program that no dialog stands before.
    for (const Command& command : menuCommands) {
        const QString title = QString::fromUtf8(command.menu);
        if (!menus.contains(title))
            menus[title] = menuBar()->addMenu(title);
        QMenu* menu = menus[title];
        QAction* action = menu->addAction(QString::fromUtf8(command.title));
        if (command.shortcut != 0)
            action->setShortcut(QKeySequence(command.shortcut));
        action->setShortcutContext(Qt::ApplicationShortcut);
        connect(action, &QAction::triggered, this, [&notifications, name = command.name] { notifications.post(name); });
        if (command.name == openFromURLName) {
            QMenu* recent = menu->addMenu(tr("Open Recent"));
            connect(recent, &QMenu::aboutToShow, this,
                    [recent, &state, &notifications] { fillRecentMenu(*recent, state, notifications); });
            menu->addSeparator();
            QAction* quit = menu->addAction(tr("Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), this, &QWidget::close);
            quit->setMenuRole(QAction::QuitRole);
            quit->setShortcutContext(Qt::ApplicationShortcut);
        }
    }
}

void MainWindow::restorePlace()
{
    if (const auto place = m_defaults.data(placeKey))
        if (restoreGeometry(QByteArray::fromStdString(*place)))
            return;
    const QSize available = QGuiApplication::primaryScreen()->availableSize();
    resize(usualSize.boundedTo(available - QSize(40, 60)));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    m_defaults.setData(placeKey, saveGeometry().toStdString());
    QMainWindow::closeEvent(event);
}

}  // namespace quillet
