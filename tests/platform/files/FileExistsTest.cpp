#include "platform/files/FileExists.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace quillet {
namespace {

TEST(FileExists, TellsWhatIsThereOfWhatIsNot)
{
    const TemporaryFolder folder;
    std::ofstream(folder / "song \xE9.wav").put('x');
    std::filesystem::create_symlink(folder / "nowhere", folder / "broken");
    std::filesystem::create_symlink("broken loop", folder / "broken loop");
    EXPECT_TRUE(fileExists(folder / "song \xE9.wav"));
    EXPECT_TRUE(fileExists(folder.path()));
    for (const char* name : { "nowhere", "broken", "broken loop", "song \xE9.wav/x" })
        EXPECT_FALSE(fileExists(folder / name)) << name;
    EXPECT_FALSE(fileExists(FilePath()));
}

}  // namespace
}  // namespace quillet
