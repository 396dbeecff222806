// Puts the lines together that a child writes and a pipe cuts anywhere. A line ends with a line feed or a carriage return (a
// line that is to be written over). It keeps no more than one line, and of that no more than `maxLine` bytes.
// Threads: one at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace quillet {

class LineSplitter {
public:
    static constexpr std::size_t maxLine = 65536;

    /// `take` is given every line with its end. A line that is too long comes in pieces, of which only the last has one.
    explicit LineSplitter(std::function<void(std::string_view line)> take);

    void add(std::string_view bytes);
    /// Gives what is left without an end, if anything is.
    void finish();

private:
    void give();

    std::function<void(std::string_view line)> m_take;
    std::string m_line;
};

}  // namespace quillet
