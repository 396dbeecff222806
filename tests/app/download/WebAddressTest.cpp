// What counts as a web address, and as what it reaches a program.

#include "app/download/WebAddress.h"

#include <gtest/gtest.h>

namespace quillet {
namespace {

TEST(WebAddress, IsTakenAsItIsOrNotAtAll)
{
    struct Case {
        const char* typed;
        /// Null: no address.
        const char* address;
    };
    for (const Case& test : {
             Case{ "https://example.com/song.mp3", "https://example.com/song.mp3" },
             Case{ " \t https://example.com/a?b=1&c=%20#d \xC2\xA0", "https://example.com/a?b=1&c=%20#d" },
             Case{ "http://127.0.0.1:8080/x", "http://127.0.0.1:8080/x" },
             Case{ "example.com/song.mp3", "example.com/song.mp3" },
             Case{ "https://example.com/my song \xC3\xA9.mp3", "https://example.com/my%20song%20%C3%A9.mp3" },
             Case{ "https://b\xC3\xBC"
                   "cher.example/",
                   "https://xn--bcher-kva.example/" },
             Case{ "https://example.com/100%", "https://example.com/100%25" },
             Case{ "https://example.com/'\"`$(id);rm", "https://example.com/'%22%60$(id);rm" },
             Case{ "", nullptr },
             Case{ " \t ", nullptr },
             Case{ "-x", nullptr },
             Case{ " --exec=reboot", nullptr },
             Case{ "https://example.com/a\n", nullptr },
             Case{ "https://example.com/a\nb", nullptr },
             Case{ "https://", nullptr },
             Case{ "http:///song.mp3", nullptr },
             Case{ "https://exa mple.com/", nullptr },
             Case{ "http://[::1/", nullptr },
             Case{ "http://example.com:port/", nullptr },
         }) {
        const auto address = WebAddress::parse(test.typed);
        ASSERT_EQ(address.has_value(), test.address != nullptr) << test.typed;
        EXPECT_EQ(address ? address->absoluteText() : "", test.address != nullptr ? test.address : "");
    }
}

}  // namespace
}  // namespace quillet
