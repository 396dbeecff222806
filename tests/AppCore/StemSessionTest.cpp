#include "AppCore/StemSession.h"

#include <gtest/gtest.h>

#include <utility>

namespace quillet {
namespace {

TEST(StemSession, MutesTheFirstStemOfTheKey)
{
    StemSession session{ { { "drums", "/d.wav" }, { "bass", "/b.wav" }, { "drums", "/e.wav" } } };
    session.setMuted(true, "drums");
    session.setMuted(true, "drums");
    session.setMuted(true, "piano");
    EXPECT_EQ(session, (StemSession{ { { "drums", "/d.wav", true }, { "bass", "/b.wav" }, { "drums", "/e.wav" } } }));
    session.setMuted(false, "drums");
    EXPECT_FALSE(session.stems.front().isMuted);
}

TEST(StemSession, ASeparationsFilesComeInTheFixedOrder)
{
    const std::map<std::string, FilePath> files{ { "bass", "/b" },  { "drums", "/d" },  { "guitar", "/g" },
                                                 { "other", "/o" }, { "vocals", "/v" }, { "zither", "/z" } };
    EXPECT_EQ(
        StemSession::fromSeparation(files),
        (StemSession{ { { "vocals", "/v" }, { "drums", "/d" }, { "bass", "/b" }, { "guitar", "/g" }, { "other", "/o" } } }));
}

TEST(StemSession, ComesBackOnlyWithAllItsFiles)
{
    const auto exists = [](const FilePath& file) { return file != "/gone"; };
    EXPECT_TRUE((StemSession{ { { "drums", "/d" }, { "bass", "/b" } } }).isRestorable(exists));
    EXPECT_FALSE((StemSession{ { { "drums", "/d" }, { "bass", "/gone" } } }).isRestorable(exists));
    EXPECT_FALSE(StemSession{}.isRestorable(exists));
}

TEST(StemSession, ShowsKeysAsCapitalisedWords)
{
    const std::pair<const char*, const char*> cases[] = {
        { "vocals", "Vocals" },           { "other", "Other" },
        { "lead GUITAR", "Lead Guitar" }, { "", "" },
        { "2nd  violin", "2nd  Violin" }, { "\xC3\xA9tude", "\xC3\xA9tude" },
    };
    for (const auto& [key, expected] : cases)
        EXPECT_EQ(StemSession::displayName(key), expected);
}

}  // namespace
}  // namespace quillet
