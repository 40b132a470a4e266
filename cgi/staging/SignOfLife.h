#pragma once

#include <chrono>

// Touches a lock file every second during its lifetime, also while the process waits. Other requests see from
// the time of the file that its holder works. A timer signal does this: it stops when the process is killed
// or stopped, it needs no thread, and commands do not inherit it. A process may have only one at a time.
class SignOfLife {
public:
    static constexpr std::chrono::seconds kInterval{1};

    // lock: a descriptor that stays open during the lifetime of this object.
    explicit SignOfLife(int lock);
    SignOfLife(const SignOfLife&) = delete;
    SignOfLife& operator=(const SignOfLife&) = delete;
    ~SignOfLife();
};
