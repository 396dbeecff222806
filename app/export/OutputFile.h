// A file that the program writes for the user, as it comes in. It appears under its name only when it is whole: until `finish`
// everything goes to "<name>.quillet-<number>.part" beside it, and one destroyed unfinished leaves nothing behind. A pipe or a
// character device is written to directly. It knows nothing of what it holds.
// Threads: one thread at a time.
#pragma once

#include "platform/base/FilePath.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <string>

namespace quillet {

/// Why a file could not be written: `number` is an errno value.
struct WriteError {
    FilePath path;
    int number = 0;
};

/// One sentence for the user, naming the file.
std::string describe(const WriteError& error);

/// `wanted`, or where that is taken the first of "name (2).ext", "name (3).ext", … that is not. It asks the disk.
[[nodiscard]] FilePath freeName(const FilePath& wanted);

class OutputFile {
public:
    /// Begins a file for `target`, which may exist (`finish` replaces it and keeps its permissions; through a symbolic link,
    /// the file it leads to). Fails if nothing can be written there.
    [[nodiscard]] static std::expected<std::unique_ptr<OutputFile>, WriteError> create(const FilePath& target);

    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// After a failure of this or of what follows only destruction makes sense.
    [[nodiscard]] std::expected<void, WriteError> write(std::span<const std::byte> bytes);

    /// Whether what has been written can be overwritten: not in a pipe.
    [[nodiscard]] bool canSeek() const { return !m_temporary.empty(); }
    /// Goes on writing at that byte, which is not beyond the end.
    [[nodiscard]] std::expected<void, WriteError> seek(std::int64_t position);

    /// Brings the file to the disk and gives it its name. Once, and nothing can be written afterwards.
    [[nodiscard]] std::expected<void, WriteError> finish();

    /// As the user named it.
    [[nodiscard]] const FilePath& name() const { return m_named; }
    /// The unfinished file, for a signal handler that must remove it; empty when there is none.
    [[nodiscard]] const FilePath& temporaryPath() const { return m_temporary; }

private:
    explicit OutputFile(FilePath named);

    std::expected<void, WriteError> open();
    std::expected<void, WriteError> openBeside();
    std::expected<void, WriteError> openDirectly();
    std::unexpected<WriteError> failure(int number) const;
    void discard();

    const FilePath m_named;
    FilePath m_target;
    FilePath m_temporary;
    int m_descriptor = -1;
};

}  // namespace quillet
