// Where the opening of a file stands.
// Threads: a value, no shared state.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace quillet {

struct LoadingState {
    enum class Stage { idle, loading, loaded };

    Stage stage = Stage::idle;
    /// What is shown to the user while loading; empty otherwise.
    std::string message;

    /// How far the loading is, 0 to 1, while that is known.
    std::optional<double> fraction = std::nullopt;

    /// Two that say the same are the same.
    bool operator==(const LoadingState& other) const { return stage == other.stage && message == other.message; }

    /// No file is being opened, and none is open.
    static LoadingState idle() { return {}; }
    static LoadingState loading(std::string message, std::optional<double> fraction = std::nullopt)
    {
        return { Stage::loading, std::move(message), fraction };
    }
    static LoadingState loaded() { return { Stage::loaded, {} }; }
};

}  // namespace quillet
