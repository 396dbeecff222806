// An address on the web as a user types it. There is no other way to make one, so that whoever is given a WebAddress can hand
// it to a program as an argument: it never looks like an option.
// Threads: a value.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillet {

class WebAddress {
public:
    /// `typed` (UTF-8) without the blanks (spaces of every width and tabs, not line ends) around it, read forgivingly: spaces
    /// and letters that no address has are escaped, the host's are put into ASCII. Nothing for a text that is empty then, has
    /// control characters in it, begins with "-" or is no URL, such as one with a scheme of the web and no host.
    [[nodiscard]] static std::optional<WebAddress> parse(std::string_view typed);

    /// In ASCII.
    [[nodiscard]] const std::string& absoluteText() const { return m_absoluteText; }

private:
    explicit WebAddress(std::string absoluteText)
        : m_absoluteText(std::move(absoluteText))
    {
    }

    std::string m_absoluteText;
};

}  // namespace quillet
