// A folder of its own for one test, removed with everything in it at the end.
// Threads: any.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/base/Require.h"

#include <cstdlib>
#include <string>
#include <system_error>

namespace quillet {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "quillet-test-XXXXXX";
        REQUIRE(mkdtemp(name.data()) != nullptr);
        m_path = name;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const FilePath& path() const { return m_path; }
    [[nodiscard]] FilePath operator/(const FilePath& name) const { return m_path / name; }

private:
    FilePath m_path;
};

}  // namespace quillet
