#include "app/ui/FilePanel.h"

#include "app/core/FileAddress.h"
#include "app/ui/FileNames.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QWidget>

#include <optional>
#include <utility>

namespace quillet {
namespace {

/// As the portal has them: a kind, of which 0 is a pattern of names, and the pattern; and a name with its patterns.
using PortalPattern = std::pair<uint, QString>;
using PortalFilter = std::pair<QString, QList<PortalPattern>>;

/// By then a portal that is only being started has answered, too.
constexpr int timeoutMilliseconds = 5000;
constexpr uint success = 0;

std::optional<QDBusConnection>& desktopBus()
{
    static std::optional<QDBusConnection> bus;
    return bus;
}

QString portalService() { return QStringLiteral("org.freedesktop.portal.Desktop"); }
QString portalPath() { return QStringLiteral("/org/freedesktop/portal/desktop"); }
QString requestInterface() { return QStringLiteral("org.freedesktop.portal.Request"); }

/// What the portal calls the window that its panel belongs to. Wayland has names for that which the toolkit does not tell.
QString portalName(const QWidget& window)
{
    return QGuiApplication::platformName() == QLatin1String("xcb")
        ? QStringLiteral("x11:") + QString::number(window.window()->winId(), 16)
        : QString();
}

QList<PortalFilter> portalFilters(const std::vector<FilePanel::Filter>& filters)
{
    QList<PortalFilter> all;
    for (const FilePanel::Filter& filter : filters) {
        QList<PortalPattern> patterns;
        for (const QString& pattern : filter.patterns)
            patterns.append({ 0, pattern });
        all.append({ filter.name, patterns });
    }
    return all;
}

bool isDirectory(const FilePath& path)
{
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

QVariantMap portalOptions(const FilePanel::Options& options, const QString& token)
{
    QVariantMap map{ { QStringLiteral("handle_token"), token },
                     { QStringLiteral("modal"), true },
                     { QStringLiteral("directory"), options.isForFolders },
                     { QStringLiteral("multiple"), options.takesSeveral } };
    if (!options.acceptLabel.isEmpty())
        map.insert(QStringLiteral("accept_label"), options.acceptLabel);
    if (isDirectory(options.folder)) {
        // With the byte that ends it.
        const std::string& folder = options.folder.native();
        map.insert(QStringLiteral("current_folder"), QByteArray(folder.c_str(), static_cast<qsizetype>(folder.size()) + 1));
    }
    if (!options.filters.empty()) {
        const auto filters = portalFilters(options.filters);
        map.insert(QStringLiteral("filters"), QVariant::fromValue(filters));
        map.insert(QStringLiteral("current_filter"), QVariant::fromValue(filters.front()));
    }
    return map;
}

}  // namespace

void FilePanel::joinDesktop(const QDBusConnection& bus)
{
    qDBusRegisterMetaType<PortalPattern>();
    qDBusRegisterMetaType<QList<PortalPattern>>();
    qDBusRegisterMetaType<PortalFilter>();
    qDBusRegisterMetaType<QList<PortalFilter>>();
    desktopBus() = bus;
}

FilePanel::FilePanel(QWidget& window, Options options, Chosen chosen, OpenSheet openSheet)
    : QObject(&window),
      m_window(window),
      m_options(std::move(options)),
      m_chosen(std::move(chosen)),
      m_openSheet(std::move(openSheet))
{
    if (desktopBus() && desktopBus()->isConnected())
        askPortal();
    else
        openToolkits();
}

FilePanel::~FilePanel() { closePortals(); }

void FilePanel::raise()
{
    if (m_panel) {
        m_panel->raise();
        m_panel->activateWindow();
    } else if (!m_request.isEmpty()) {
        // Only the desktop can raise its own; and it may have lost it.
        closePortals();
        askPortal();
    }
}

void FilePanel::finish(const std::vector<FilePath>& paths)
{
    deleteLater();
    if (!paths.empty())
        m_chosen(paths);
}

// ---- The desktop's ----

void FilePanel::askPortal()
{
    static int count = 0;
    QDBusConnection& bus = *desktopBus();
    const QString token = QStringLiteral("quillet%1").arg(++count);
    const QString sender = bus.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    m_request = portalPath() + QStringLiteral("/request/") + sender + QLatin1Char('/') + token;
    // The service is not named: to look up who that is would be to wait.
    bus.connect({}, m_request, requestInterface(), QStringLiteral("Response"), this, SLOT(takeResponse(uint, QVariantMap)));
    QDBusMessage question = QDBusMessage::createMethodCall(
        portalService(), portalPath(), QStringLiteral("org.freedesktop.portal.FileChooser"), QStringLiteral("OpenFile"));
    question << portalName(m_window) << m_options.title << portalOptions(m_options, token);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question, timeoutMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, request = m_request] {
        const QDBusPendingReply<QDBusObjectPath> answer = *watcher;
        watcher->deleteLater();
        if (answer.isValid() || m_request != request)
            return;
        // One that is only slow opens none any more.
        closePortals();
        openToolkits();
    });
}

void FilePanel::closePortals()
{
    if (m_request.isEmpty())
        return;
    desktopBus()->disconnect({}, m_request, requestInterface(), QStringLiteral("Response"), this,
                             SLOT(takeResponse(uint, QVariantMap)));
    desktopBus()->send(QDBusMessage::createMethodCall(portalService(), m_request, requestInterface(), QStringLiteral("Close")));
    m_request.clear();
}

void FilePanel::takeResponse(uint response, const QVariantMap& results)
{
    m_request.clear();
    std::vector<FilePath> paths;
    if (response == success)
        for (const QString& address : results.value(QStringLiteral("uris")).toStringList())
            if (auto path = localFile(address.toUtf8()))
                paths.push_back(std::move(*path));
    finish(paths);
}

// ---- The toolkit's ----

void FilePanel::openToolkits()
{
    auto* panel = new QFileDialog(
        &m_window, m_options.title,
        isDirectory(m_options.folder) ? QFile::decodeName(QByteArray::fromStdString(m_options.folder.native())) : QString());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowModality(Qt::WindowModal);
    panel->setFileMode(m_options.isForFolders       ? QFileDialog::Directory
                           : m_options.takesSeveral ? QFileDialog::ExistingFiles
                                                    : QFileDialog::ExistingFile);
    if (m_options.isForFolders)
        panel->setOption(QFileDialog::ShowDirsOnly);
    else
        // It opens files; it renames and deletes nothing.
        panel->setOption(QFileDialog::ReadOnly);
    if (!m_options.acceptLabel.isEmpty())
        panel->setLabelText(QFileDialog::Accept, m_options.acceptLabel);
    panel->setOption(QFileDialog::HideNameFilterDetails);
    QStringList filters;
    for (const Filter& filter : m_options.filters)
        filters << filter.name + QStringLiteral(" (") + filter.patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
    if (!filters.isEmpty())
        panel->setNameFilters(filters);
    connect(panel, &QFileDialog::filesSelected, this, [this](const QStringList& files) {
        std::vector<FilePath> paths;
        for (const QString& file : files)
            paths.push_back(pathOf(file));
        finish(paths);
    });
    // Also when it is left.
    connect(panel, &QObject::destroyed, this, &QObject::deleteLater);
    m_panel = panel;
    m_openSheet(*panel);
}

void openPanel(QDialog& panel) { panel.open(); }

}  // namespace quillet
