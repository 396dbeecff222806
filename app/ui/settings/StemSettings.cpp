#include "app/ui/settings/StemSettings.h"

#include "app/ui/ByteCount.h"
#include "app/ui/FileNames.h"
#include "app/ui/Questions.h"
#include "app/ui/controls/Label.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <memory>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quillet {
namespace {

/// In a folder that holds other things the environment gets one of its own.
constexpr const char* ownFolderName = "quillet-environment";

enum class Finding {
    /// It is missing, empty, or ours.
    free,
    shared,
    unwritable,
};

bool holdsOthers(const FilePath& folder)
{
    std::error_code error;
    const auto own = StemFolder::all(folder);
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (std::ranges::find(own, entry->path(), &StemFolder::path) == own.end())
            return true;
    return false;
}

}  // namespace

struct StemSettings::Sizes {
    std::int64_t stems = 0;
    std::int64_t dependencies = 0;
    bool stemsExist = false;
};

StemSettings::StemSettings(const Services& services, QWidget* parent)
    : QWidget(parent),
      m_services(services),
      m_stemsFolder(new FolderRow(
          services.theme, tr("Stems folder"),
          { [this](const FilePath& folder) { choose(Folder::stems, folder); }, [this] { reset(Folder::stems); } })),
      m_dependenciesFolder(new FolderRow(services.theme, tr("Dependencies folder"),
                                         { [this](const FilePath& folder) { choose(Folder::dependencies, folder); },
                                           [this] { reset(Folder::dependencies); } })),
      m_stemSize(new Label(services.theme, Label::Role::number, {})),
      m_dependenciesSize(new Label(services.theme, Label::Role::number, {})),
      m_delete(new QPushButton(tr("Delete Stems"))),
      m_remove(new QPushButton(tr("Remove Dependencies")))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    const auto addSizes = [&](const QString& name, Label* size, QPushButton* button) {
        auto* row = new QHBoxLayout;
        row->addWidget(new Label(services.theme, Label::Role::text, name));
        row->addStretch(1);
        row->addWidget(size);
        row->addWidget(button);
        button->setAutoDefault(false);
        column->addLayout(row);
    };
    column->addWidget(m_stemsFolder);
    addSizes(tr("Stems on disk"), m_stemSize, m_delete);
    column->addWidget(m_dependenciesFolder);
    addSizes(tr("Dependencies"), m_dependenciesSize, m_remove);
    connect(m_delete, &QAbstractButton::clicked, this, &StemSettings::confirmDeletion);
    connect(m_remove, &QAbstractButton::clicked, this, &StemSettings::confirmRemoval);
    connect(&services.separator, &StemSeparator::phaseChanged, this, [this] {
        syncButtons();
        if (!m_services.separator.isRunning() && isVisible())
            refreshStemStats();
    });
    syncButtons();
}

void StemSettings::inBackground(std::function<void()> job, std::function<void()> then)
{
    m_services.background.run(
        [&scheduler = m_services.scheduler, self = QPointer(this), job = std::move(job), then = std::move(then)] {
            job();
            scheduler.post([self, then] {
                if (self)
                    then();
            });
        });
}

// ---- Folders ----

void StemSettings::choose(Folder which, const FilePath& folder)
{
    auto finding = std::make_shared<Finding>(Finding::free);
    inBackground(
        [which, folder, finding] {
            const bool isShared = which == Folder::stems ? holdsOthers(folder) : !DependenciesFolder(folder, {}).isOwn();
            if (isShared)
                *finding = Finding::shared;
            if (::access(folder.c_str(), W_OK) != 0)
                *finding = Finding::unwritable;
        },
        [this, which, folder, finding] {
            if (*finding == Finding::unwritable)
                makeStatement(*this, tr("Settings"),
                              tr("Nothing can be written to “%1”. Choose another folder.").arg(pathText(folder)))
                    ->open();
            else if (*finding == Finding::shared)
                askToShare(which, folder);
            else
                store(which, folder);
        });
}

void StemSettings::askToShare(Folder which, const FilePath& folder)
{
    const FilePath own = folder / ownFolderName;
    const bool isForStems = which == Folder::stems;
    makeQuestion(*this,
                 { tr("“%1” holds other files. Use it all the same?").arg(pathText(folder)),
                   isForStems
                       ? tr("Stems are kept beside them. Quillet touches nothing that it has not made.")
                       : tr("The environment is kept in a folder of its own there, “%1”. Quillet touches nothing that it "
                            "has not made.")
                             .arg(pathText(own)),
                   tr("Use Folder") },
                 [this, which, chosen = isForStems ? folder : own] { store(which, chosen); })
        ->open();
}

void StemSettings::store(Folder which, const FilePath& folder)
{
    m_services.defaults.setString(which == Folder::stems ? StemSettingsStore::stemsDirKey : StemSettingsStore::depsDirKey,
                                  folder.native());
    refreshStemStats();
}

void StemSettings::reset(Folder which)
{
    m_services.defaults.remove(which == Folder::stems ? StemSettingsStore::stemsDirKey : StemSettingsStore::depsDirKey);
    refreshStemStats();
}

// ---- Sizes ----

void StemSettings::refreshStemStats()
{
    const FilePath stems = m_services.settings.stemsDirectory();
    const FilePath dependencies = m_services.settings.dependenciesDirectory();
    m_stemsFolder->setFolder(stems);
    m_dependenciesFolder->setFolder(dependencies);
    const auto sizes = std::make_shared<Sizes>();
    inBackground(
        [stems, dependencies, sizes] {
            const auto folders = StemFolder::all(stems);
            sizes->stemsExist = !folders.empty();
            for (const StemFolder& folder : folders)
                sizes->stems += folder.bytes();
            sizes->dependencies = DependenciesFolder(dependencies, {}).bytes();
        },
        [this, sizes, generation = ++m_generation] {
            if (generation == m_generation)
                showSizes(*sizes);
        });
}

void StemSettings::showSizes(const Sizes& sizes)
{
    m_stemsExist = sizes.stemsExist;
    m_depsExist = sizes.dependencies > 0;
    m_stemSize->setText(m_stemsExist ? byteCountText(sizes.stems) : tr("None"));
    m_dependenciesSize->setText(m_depsExist ? byteCountText(sizes.dependencies) : tr("Not installed"));
    syncButtons();
}

void StemSettings::syncButtons()
{
    // What is being written is not deleted.
    const bool isRunning = m_services.separator.isRunning();
    m_delete->setEnabled(m_stemsExist && !isRunning);
    m_remove->setEnabled(m_depsExist && !isRunning);
    const QString reason = isRunning ? tr("A song is being separated.") : QString();
    m_delete->setToolTip(reason);
    m_remove->setToolTip(reason);
}

// ---- Deleting ----

void StemSettings::confirmDeletion()
{
    makeQuestion(*this,
                 { tr("Delete %1 of separated stem files?").arg(m_stemSize->text()),
                   tr("They can be recreated by running separation again."), tr("Delete Stems"), true },
                 [this] { deleteStems(); })
        ->open();
}

void StemSettings::deleteStems()
{
    // Nothing plays from what is deleted.
    m_services.commands.execute(CommandId::stemFilesDeleted);
    m_stemsExist = false;
    m_stemSize->setText(tr("Deleting…"));
    syncButtons();
    inBackground(
        [stems = m_services.settings.stemsDirectory(), &sessions = m_services.sessions, &mixes = m_services.mixes] {
            for (const StemFolder& folder : StemFolder::all(stems))
                folder.remove();
            std::error_code notEmpty;
            std::filesystem::remove(stems, notEmpty);
            sessions.clearAll();
            mixes.clearAll();
        },
        [this] { refreshStemStats(); });
}

void StemSettings::confirmRemoval()
{
    makeQuestion(
        *this,
        { tr("Remove %1 of stem separation dependencies?").arg(m_dependenciesSize->text()),
          tr("Stem separation requires these dependencies to split audio into individual stems. You can remove them to "
             "free up space — they will be re-downloaded the next time you separate stems."),
          tr("Remove Dependencies"), true },
        [this] { removeDependencies(); })
        ->open();
}

void StemSettings::removeDependencies()
{
    m_depsExist = false;
    m_dependenciesSize->setText(tr("Removing…"));
    syncButtons();
    inBackground(
        [dependencies = m_services.settings.dependenciesDirectory()] { DependenciesFolder(dependencies, {}).remove(); },
        [this] { refreshStemStats(); });
}

}  // namespace quillet
