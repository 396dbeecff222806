#include "app/cli/ProgressLine.h"

#include <unistd.h>

#include <cstdio>

namespace quillet {

ProgressLine::ProgressLine()
    : m_terminal(isatty(STDERR_FILENO) == 1)
{
}

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::show(const std::string& text)
{
    if (!m_terminal || text == m_shown)
        return;
    std::fprintf(stderr, "\r\x1b[K%s", text.c_str());
    std::fflush(stderr);
    m_shown = text;
}

void ProgressLine::clear()
{
    if (m_shown.empty())
        return;
    std::fputs("\r\x1b[K", stderr);
    m_shown.clear();
}

}  // namespace quillet
