#include "AppCore/PracticeStore.h"

#include <string>
#include <string_view>

namespace quillet {
namespace {

constexpr std::string_view keyPrefix = "practice.";

std::string keyOf(const FilePath& song) { return std::string(keyPrefix) + song.native(); }

}  // namespace

void PracticeStore::save(const Practice& practice, const FilePath& song)
{
    if (practice == Practice())
        m_defaults.remove(keyOf(song));
    else
        m_defaults.setData(keyOf(song), encodePractice(practice));
}

Practice PracticeStore::load(const FilePath& song) const
{
    const auto text = m_defaults.data(keyOf(song));
    return (text ? decodePractice(*text) : std::nullopt).value_or(Practice());
}

}  // namespace quillet
