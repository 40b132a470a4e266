#pragma once

#include <cerrno>

// Repeats a system call while a signal interrupts it (EINTR). Returns the result of the last call.
template<typename Call>
auto retryInterrupted(Call&& call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}
