#include "platform/update/AppcastFeed.h"

#include <QUrl>
#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

constexpr int maxSegments = 4;
constexpr qsizetype maxDigits = 6;
constexpr qsizetype maxNotes = 65'536;

bool isForThisSystem(QStringView system)
{
    return system.isEmpty() || system.compare(QLatin1String("linux"), Qt::CaseInsensitive) == 0;
}

/// What an item says of itself, wherever it says it.
struct Item {
    QString version;
    QString shortVersion;
    QString notes;
    QString page;
    QString system;

    void takeEnclosure(const QXmlStreamAttributes& attributes)
    {
        for (const QXmlStreamAttribute& attribute : attributes)
            take(attribute.name(), attribute.value().toString());
    }

    void take(QStringView name, const QString& value)
    {
        if (name == QLatin1String("version"))
            version = value.trimmed();
        else if (name == QLatin1String("shortVersionString"))
            shortVersion = value.trimmed();
        else if (name == QLatin1String("os"))
            system = value.trimmed();
        else if (name == QLatin1String("description"))
            notes = value.left(maxNotes);
        else if (name == QLatin1String("link"))
            page = value.trimmed();
    }

    [[nodiscard]] std::optional<FeedRelease> release() const
    {
        const QVersionNumber number = parseVersion(shortVersion.isEmpty() ? version : shortVersion);
        if (number.isNull() || !isForThisSystem(system))
            return std::nullopt;
        const QUrl address(page, QUrl::StrictMode);
        const bool isSafe = address.isValid() && address.scheme() == QLatin1String("https") && !address.host().isEmpty();
        return FeedRelease{ number, notes, isSafe ? address.toString() : QString() };
    }
};

Item readItem(QXmlStreamReader& xml)
{
    Item item;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("enclosure")) {
            item.takeEnclosure(xml.attributes());
            xml.skipCurrentElement();
        } else {
            const QString name = xml.name().toString();
            item.take(name, xml.readElementText(QXmlStreamReader::SkipChildElements));
        }
    }
    return item;
}

}  // namespace

QVersionNumber parseVersion(QStringView text)
{
    QList<int> numbers;
    for (const QStringView part : text.split(QLatin1Char('.'))) {
        const bool isNumber = !part.isEmpty() && part.size() <= maxDigits
            && std::ranges::all_of(part, [](QChar digit) { return digit >= QLatin1Char('0') && digit <= QLatin1Char('9'); });
        if (!isNumber)
            return {};
        numbers << part.toInt();
    }
    if (numbers.size() < 2 || numbers.size() > maxSegments)
        return {};
    return QVersionNumber(numbers).normalized();
}

std::optional<std::vector<FeedRelease>> releasesIn(QByteArrayView feed)
{
    QXmlStreamReader xml(feed.toByteArray());
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("rss") || !xml.readNextStartElement()
        || xml.name() != QLatin1String("channel"))
        return std::nullopt;
    std::vector<FeedRelease> releases;
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("item")) {
            xml.skipCurrentElement();
            continue;
        }
        const Item item = readItem(xml);
        if (xml.hasError())
            break;
        if (auto release = item.release())
            releases.push_back(*std::move(release));
    }
    // Of a feed that breaks off nobody knows what it would have said.
    if (xml.hasError())
        return std::nullopt;
    return releases;
}

std::optional<FeedRelease> newestAfter(const std::vector<FeedRelease>& releases, const QVersionNumber& present)
{
    const auto newest = std::ranges::max_element(releases, {}, &FeedRelease::version);
    if (newest == releases.end() || !(newest->version > present.normalized()))
        return std::nullopt;
    return *newest;
}

}  // namespace quillet
