#pragma once

#include <cstdint>
#include <string>

#include "common/UniqueFd.h"

// Rules for this process and everything that it starts (landlock(7)). They cannot be taken back. The kernel
// refuses with EACCES what no rule allows. A process may enforce several sets of rules: then each set must
// allow an access.
class Landlock {
public:
    using Rights = std::uint64_t;

    // A right on a directory holds for everything below it.
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

    // Makes rules that allow nothing yet. They cover every right above that the kernel knows; TCP from
    // version 4 on; signals to other processes, and their abstract sockets, from version 6 on. A kernel older
    // than leastVersion gets no rules, and enforce fails.
    explicit Landlock(int leastVersion = 1);

    // Allows the rights at path. Does nothing for a path that does not exist or that this user cannot reach.
    // Any other failure makes the rules void, with a line on standard error, because they would hide stored
    // files.
    void allow(const std::string& path, Rights rights);

    // Puts the rules into force. Returns false without Landlock and when the rules are void; then the process
    // has no rules.
    bool enforce() const;

private:
    Rights m_known = 0;
    UniqueFd m_rules;
};
