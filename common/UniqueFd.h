#pragma once

#include <unistd.h>

#include <utility>

// Owns one file descriptor; -1 means none.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : m_fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { reset(); }

    explicit operator bool() const { return m_fd >= 0; }
    int get() const { return m_fd; }

    // Returns the descriptor to the caller, who must close it.
    int release() { return std::exchange(m_fd, -1); }

    // Closes the descriptor. Returns the result of close(2), or 0 when nothing was open. A writer must check
    // it.
    int reset() { return m_fd < 0 ? 0 : ::close(release()); }

private:
    int m_fd = -1;
};
