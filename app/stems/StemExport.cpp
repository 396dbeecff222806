#include "app/stems/StemExport.h"

#include "AppCore/StemSession.h"

#include <QCoreApplication>
#include <QString>

#include <system_error>

namespace quillet {
namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(StemExport)
};

std::error_code copyWhole(const FilePath& from, const FilePath& to)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(from, error);
    if (error)
        return error;
    std::error_code missing;
    if (std::filesystem::file_size(to, missing) == size && !missing)
        return {};
    FilePath aside = to;
    aside += ".part";
    std::filesystem::copy_file(from, aside, std::filesystem::copy_options::overwrite_existing, error);
    if (!error)
        std::filesystem::rename(aside, to, error);
    if (error)
        std::filesystem::remove(aside, missing);
    return error;
}

}  // namespace

std::expected<FilePath, std::string> exportStems(const StemFolder::Stems& stems, const FilePath& song, const FilePath& folder)
{
    FilePath target = folder / song.stem();
    target += " Stems";
    std::error_code error;
    std::filesystem::create_directories(target, error);
    for (auto stem = stems.begin(); !error && stem != stems.end(); ++stem)
        error = copyWhole(stem->second, target / (StemSession::displayName(stem->first) + stem->second.extension().native()));
    if (!error)
        return target;
    return std::unexpected(Text::tr("The stems could not be copied to “%1”: %2.")
                               .arg(QString::fromStdString(displayText(target)), QString::fromStdString(error.message()))
                               .toStdString());
}

}  // namespace quillet
