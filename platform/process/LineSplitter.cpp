#include "platform/process/LineSplitter.h"

#include <utility>

namespace quillet {

LineSplitter::LineSplitter(std::function<void(std::string_view line)> take)
    : m_take(std::move(take))
{
}

void LineSplitter::add(std::string_view bytes)
{
    while (!bytes.empty()) {
        std::string_view piece = bytes.substr(0, maxLine - m_line.size());
        const auto end = piece.find_first_of("\r\n");
        piece = piece.substr(0, end == std::string_view::npos ? end : end + 1);
        bytes.remove_prefix(piece.size());
        m_line += piece;
        if (end != std::string_view::npos || m_line.size() == maxLine)
            give();
    }
}

void LineSplitter::finish()
{
    if (!m_line.empty())
        give();
}

void LineSplitter::give() { m_take(std::exchange(m_line, {})); }

}  // namespace quillet
