// One line on the terminal that is written over as the work goes on; nothing where standard error is no terminal.
// Threads: one thread.
#pragma once

#include <string>

namespace quillet {

class ProgressLine {
public:
    ProgressLine();
    /// Removes the line.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const std::string& text);
    /// Removes the line, so that something else can be printed.
    void clear();

private:
    bool m_terminal;
    std::string m_shown;
};

}  // namespace quillet
