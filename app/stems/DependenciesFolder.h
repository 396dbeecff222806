// The folder of the Python environment that separates stems: whether it is whole, and whether it is Quillet's to build and to
// delete.
// Threads: callable from every thread that may wait for a disk.
#pragma once

#include "app/stems/StemError.h"
#include "platform/base/FilePath.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quillet {

class DependenciesFolder {
public:
    /// `requirements` lists what the environment is made of; empty where nobody knows where that list lies.
    DependenciesFolder(FilePath path, FilePath requirements);

    [[nodiscard]] const FilePath& path() const { return m_path; }
    [[nodiscard]] FilePath interpreter() const { return m_path / "bin" / "python3"; }

    /// Whether the environment is missing, unfinished, or made from other requirements.
    [[nodiscard]] bool needsEnvironmentSetup() const;
    /// Why it cannot be built here; nothing if it can.
    [[nodiscard]] std::optional<StemError> obstacle() const;
    /// From now on, until `writeRequirementsHash`, it counts as unfinished, whatever ends the program.
    void begin() const;
    /// The environment that has just been made there is Quillet's, whole or not. Without effect where the disk refuses.
    void claim() const;
    /// It is whole. Without effect where the disk refuses: it is built again then.
    void writeRequirementsHash() const;
    /// Of the environment; 0 where there is none.
    [[nodiscard]] std::int64_t bytes() const;
    /// Deletes the environment, unless the folder holds something else than one.
    void remove() const;
    /// Whether the folder is missing, empty or an environment that Quillet has made: only such a one is built in, and deleted.
    [[nodiscard]] bool isOwn() const;

private:
    [[nodiscard]] std::optional<std::string> currentRequirementsHash() const;
    [[nodiscard]] std::optional<std::string> storedRequirementsHash() const;

    FilePath m_path;
    FilePath m_requirements;
};

}  // namespace quillet
