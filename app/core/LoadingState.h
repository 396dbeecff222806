// Where the opening of a file stands.
// Threads: a value, no shared state.
#pragma once

#include <string>
#include <utility>

namespace quillet {

struct LoadingState {
    enum class Stage { idle, loading, loaded };

    Stage stage = Stage::idle;
    /// What is shown to the user while loading; empty otherwise.
    std::string message;

    bool operator==(const LoadingState&) const = default;

    /// No file is being opened, and none is open.
    static LoadingState idle() { return {}; }
    static LoadingState loading(std::string message) { return { Stage::loading, std::move(message) }; }
    static LoadingState loaded() { return { Stage::loaded, {} }; }
};

}  // namespace quillet
