// Which chunk of a song is read next, so that what is in view comes first, then what is beside it, then the rest. It reads
// nothing and knows no thread: whoever reads takes a chunk here and says when it is done.
// Threads: a value, no shared state.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace quillet {

class DetailPlan {
public:
    enum class Order {
        any,
        /// From the start on: where a jump would have to decode all that comes before.
        inOrder,
    };
    enum class Scope {
        /// What is in view and beside it.
        near,
        all,
    };

    DetailPlan(std::int64_t chunks, Order order);

    /// What is in view from now on, in fractions of the song, 0 to 1.
    void look(double first, double end);

    /// A chunk to be read by a reader that has read `last`, the one after it if it is as good as another; nothing if none is
    /// left. Several readers at once begin far from each other.
    [[nodiscard]] std::optional<std::int64_t> take(std::optional<std::int64_t> last, Scope scope);
    void finish(std::int64_t chunk) { m_states.at(static_cast<std::size_t>(chunk)) = State::done; }
    /// Whether a chunk in view or beside it is to be taken.
    [[nodiscard]] bool wantsNear() const;

private:
    enum class State : std::uint8_t { open, taken, done };
    /// Chunks [first, end).
    struct Range {
        std::int64_t first = 0;
        std::int64_t end = 0;
    };

    [[nodiscard]] bool isOpen(std::int64_t chunk) const;
    [[nodiscard]] std::optional<std::int64_t> openIn(const Range& range) const;
    [[nodiscard]] std::optional<std::int64_t> firstOpen(std::int64_t from) const;
    [[nodiscard]] std::optional<std::int64_t> chosen(std::optional<std::int64_t> last, Scope scope) const;

    std::vector<State> m_states;
    Order m_order;
    Range m_view;
    Range m_near;
};

}  // namespace quillet
