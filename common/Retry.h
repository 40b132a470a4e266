#pragma once

#include <cerrno>

// Makes a system call again as long as a signal interrupts it; returns what it returned, -1 with errno after
// a failure.
template<typename Call>
auto retryInterrupted(Call&& call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}
