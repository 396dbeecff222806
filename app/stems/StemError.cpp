#include "app/stems/StemError.h"

#include "app/stems/BackendSentences.h"

#include <QCoreApplication>
#include <QString>

namespace quillet {
namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(StemError)
};

QString gigabytes(double bytes) { return QString::number(bytes / (1 << 30), 'f', 1); }

QString textOf(const MissingBinary& error)
{
    return Text::tr("Required binary '%1' not found in app bundle.").arg(QString::fromStdString(error.name));
}

QString textOf(const ProcessFailed& error)
{
    return error.errorText.empty() ? Text::tr("Process exited with code %1.").arg(error.exitStatus)
                                   : QString::fromStdString(error.errorText);
}

QString textOf(const SeparationFailed& error) { return inUsersLanguage(error.message); }

QString textOf(const SystemRefused& error) { return QString::fromStdString(error.description); }

QString textOf(const ForeignFolder& error)
{
    return Text::tr(
               "The folder “%1”, which is set for the dependencies of stem separation, holds other files. Choose another one; "
               "nothing was changed.")
        .arg(QString::fromStdString(error.path));
}

QString textOf(const NoSpace& error)
{
    return Text::tr("The set-up needs %1 GB of free space for “%2”, and there are %3 GB. Free some and try again.")
        .arg(gigabytes(error.neededBytes), QString::fromStdString(error.path), gigabytes(error.freeBytes));
}

}  // namespace

std::string description(const StemError& error)
{
    return std::visit([](const auto& what) { return textOf(what).toStdString(); }, error);
}

}  // namespace quillet
