// Which frame of one count is heard at which frame of another: a short piecewise list, appended to where the relation is known
// to change, and the only place that turns the one into the other.
// Threads: none of its own; allocates when a piece is added.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <ranges>

namespace quillet {

/// From frame `output` on, the source frame heard there and how many of them each further output frame takes (0: none pass).
struct MapPiece {
    double output = 0;
    double source = 0;
    double slope = 1;

    [[nodiscard]] double sourceAt(double outputFrame) const noexcept { return source + (outputFrame - output) * slope; }
};

class PositionMap {
public:
    /// Begins again, with one piece.
    void reset(const MapPiece& first) { m_pieces.assign(1, first); }

    /// What was known from `piece.output` on is forgotten in its favour.
    void append(const MapPiece& piece)
    {
        while (!m_pieces.empty() && m_pieces.back().output >= piece.output)
            m_pieces.pop_back();
        m_pieces.push_back(piece);
    }

    /// From `output` on, everything is passed `factor` times as fast.
    void hasten(double output, double factor)
    {
        const MapPiece present{ output, sourceAt(output), pieceAt(output).slope };
        auto first = std::ranges::find_if(m_pieces, [output](const MapPiece& piece) { return piece.output >= output; });
        for (auto piece = m_pieces.insert(first, present); piece != m_pieces.end(); ++piece) {
            piece->output = output + (piece->output - output) / factor;
            piece->slope *= factor;
        }
    }

    /// Only what is asked from `output` on must be known any longer.
    void forgetBefore(double output)
    {
        while (m_pieces.size() > 1 && m_pieces[1].output <= output)
            m_pieces.pop_front();
    }

    /// The piece that counts at `output`; the first one for everything before it. The map is not empty.
    [[nodiscard]] const MapPiece& pieceAt(double output) const
    {
        auto piece = m_pieces.rbegin();
        while (piece + 1 != m_pieces.rend() && piece->output > output)
            ++piece;
        return *piece;
    }
    [[nodiscard]] double sourceAt(double output) const { return pieceAt(output).sourceAt(output); }

    /// Where the piece that counts at `output` ends; infinity for the last one.
    [[nodiscard]] double endOfPiece(double output) const
    {
        for (const MapPiece& piece : m_pieces)
            if (piece.output > output)
                return piece.output;
        return HUGE_VAL;
    }

    /// The first output frame from `from` on at which `source` has been reached; infinity if the last piece never does.
    [[nodiscard]] double outputAt(double source, double from) const
    {
        for (double at = from;;) {
            const MapPiece& piece = pieceAt(at);
            const double end = endOfPiece(at);
            if (piece.sourceAt(at) >= source)
                return at;
            const double reached = piece.slope > 0 ? piece.output + (source - piece.source) / piece.slope : HUGE_VAL;
            if (reached < end || end == HUGE_VAL)
                return reached;
            at = end;
        }
    }

    /// The last output frame up to `until` at which `source` has just been reached; `until` if it has not.
    [[nodiscard]] double lastOutputAt(double source, double until) const
    {
        double end = until;
        for (const MapPiece& piece : std::views::reverse(m_pieces)) {
            if (piece.output > until)
                continue;
            if (piece.source <= source) {
                const double reached = piece.slope > 0 ? piece.output + (source - piece.source) / piece.slope : piece.output;
                return std::min(reached, end);
            }
            end = piece.output;
        }
        return end;
    }

private:
    std::deque<MapPiece> m_pieces;
};

}  // namespace quillet
