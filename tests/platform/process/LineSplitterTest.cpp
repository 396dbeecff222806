// Lines from pieces that are cut anywhere.

#include "platform/process/LineSplitter.h"

#include <gmock/gmock.h>

#include <vector>

namespace quillet {
namespace {

std::vector<std::string> split(std::string_view text, std::size_t pieceSize)
{
    std::vector<std::string> lines;
    LineSplitter splitter([&lines](std::string_view line) { lines.emplace_back(line); });
    for (; !text.empty(); text.remove_prefix(std::min(pieceSize, text.size())))
        splitter.add(text.substr(0, pieceSize));
    splitter.finish();
    return lines;
}

TEST(LineSplitter, GivesTheSameLinesHoweverTheyAreCut)
{
    const std::string longLine(2 * LineSplitter::maxLine + 1, 'x');
    for (const std::size_t pieceSize : { 1, 7, 1000000 }) {
        EXPECT_THAT(split("one\n\n 10%\r 20%\r\nlast", pieceSize),
                    testing::ElementsAre("one\n", "\n", " 10%\r", " 20%\r", "\n", "last"));
        const auto lines = split(longLine + "\nnext\n", pieceSize);
        ASSERT_EQ(lines.size(), 4);
        EXPECT_EQ(lines[0] + lines[1] + lines[2], longLine + "\n");
        EXPECT_EQ(lines[0].size(), LineSplitter::maxLine);
        EXPECT_EQ(lines[3], "next\n");
    }
}

}  // namespace
}  // namespace quillet
