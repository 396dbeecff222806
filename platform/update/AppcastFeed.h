// What a feed of releases says, and which of them is newer than this program. The feed's text is data: nothing in it acts.
// Threads: callable from every thread.
#pragma once

#include <QByteArrayView>
#include <QString>
#include <QVersionNumber>

#include <optional>
#include <vector>

namespace quillet {

struct FeedRelease {
    QVersionNumber version;
    /// As the feed has it: HTML or plain, at most 64 KiB.
    QString notes;
    /// Where it can be had: an HTTPS address, or none.
    QString page;

    bool operator==(const FeedRelease&) const = default;
};

/// A version as this program has them: two to four numbers of at most six digits each, with dots between them. Null for any
/// other text, and for nothing but zeros.
[[nodiscard]] QVersionNumber parseVersion(QStringView text);

/// The releases of an RSS feed whose items name their version in an element or an attribute of their enclosure
/// (`shortVersionString`, or `version`). Items without a version, for other systems, or that do not read are left out. Nothing
/// if the bytes are no such feed.
[[nodiscard]] std::optional<std::vector<FeedRelease>> releasesIn(QByteArrayView feed);

/// The newest of `releases`, if it is newer than `present`.
[[nodiscard]] std::optional<FeedRelease> newestAfter(const std::vector<FeedRelease>& releases, const QVersionNumber& present);

}  // namespace quillet
