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

    // Hands the descriptor over to the caller, who closes it.
    int release() { return std::exchange(m_fd, -1); }

    // Returns what close(2) returned, 0 when nothing was open: a writer must look at it.
    int reset() { return m_fd < 0 ? 0 : ::close(release()); }

private:
    int m_fd = -1;
};
