// Owns a descriptor of the kernel's: a file, a socket. It knows nothing of what is behind it.
// Threads: confined to one thread at a time.
#pragma once

#include <utility>

#include <unistd.h>

namespace quillet {

class FileDescriptor {
public:
    /// None.
    FileDescriptor() = default;
    /// Takes it; negative, as system calls say that they have failed: none.
    explicit FileDescriptor(int number)
        : m_number(number)
    {
    }
    FileDescriptor(FileDescriptor&& other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~FileDescriptor()
    {
        if (isOpen())
            ::close(m_number);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number = -1;
};

}  // namespace quillet
