#pragma once

#include <cstdint>
#include <string>

#include "common/UniqueFd.h"

// Rules under which this process and all that it starts go on, for good (landlock(7)). The kernel refuses
// with EACCES what no rule allows. A process may enforce several sets of rules: each of them has to allow an
// access.
class Landlock {
public:
    using Rights = std::uint64_t;

    // On a file these count, on a directory for everything below it.
    static constexpr Rights kExecute = 1U << 0;
    static constexpr Rights kWriteFile = 1U << 1;
    static constexpr Rights kReadFile = 1U << 2;
    static constexpr Rights kReadDirectory = 1U << 3;
    static constexpr Rights kRemove = 1U << 4 | 1U << 5;      // directories, everything else
    static constexpr Rights kMakeDevice = 1U << 6 | 1U << 11; // character and block devices
    static constexpr Rights kMakeDirectory = 1U << 7;
    static constexpr Rights kMakeFile = 1U << 8;
    static constexpr Rights kMakeSocket = 1U << 9 | 1U << 10; // sockets and FIFOs
    static constexpr Rights kMakeLink = 1U << 12;
    static constexpr Rights kMoveAcross = 1U << 13;    // from directory to directory; from version 2 on
    static constexpr Rights kTruncate = 1U << 14;      // from version 3 on
    static constexpr Rights kControlDevice = 1U << 15; // from version 5 on

    static constexpr Rights kRead = kReadFile | kReadDirectory;
    // Everything that a command does in a directory of its own.
    static constexpr Rights kWrite =
        kWriteFile | kRemove | kMakeDirectory | kMakeFile | kMakeLink | kMakeSocket | kMoveAcross | kTruncate;

    // Rules that allow nothing yet. They are about every right that the kernel knows, about TCP from version
    // 4 on, and about signals and abstract sockets of other processes from version 6 on. With an older kernel
    // than leastVersion there are none, and enforce fails.
    explicit Landlock(int leastVersion = 1);

    // A path where nothing is, or that this user cannot reach, allows nothing. After any other failure the
    // rules are void, with a line on standard error: they would hide what is there.
    void allow(const std::string& path, Rights rights);

    // False without Landlock and when the rules are void; then the process goes on without them.
    bool enforce() const;

private:
    Rights m_known = 0;
    UniqueFd m_rules;
};
