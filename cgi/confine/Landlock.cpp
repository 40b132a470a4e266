#include "cgi/confine/Landlock.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

#include "common/Report.h"
#include "common/Retry.h"

namespace {

// The calls and their arguments, as the kernel's interface fixes them. The headers of a C library are often
// older than the kernel below it.
constexpr long kCreateRuleset = 444;
constexpr long kAddRule = 445;
constexpr long kRestrictSelf = 446;
constexpr unsigned kAskVersion = 1;
constexpr int kPathBeneath = 1;

struct RulesetAttributes {
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scoped;
};

struct [[gnu::packed]] PathBeneath {
    std::uint64_t rights;
    std::int32_t place;
};

constexpr int kNetworkVersion = 4;
constexpr int kScopeVersion = 6;
constexpr std::uint64_t kTcp = 1U << 0 | 1U << 1;    // bind, connect
constexpr std::uint64_t kScopes = 1U << 0 | 1U << 1; // abstract sockets, signals

Landlock::Rights knownRights(int version) {
    Landlock::Rights known = Landlock::kExecute | Landlock::kRead | Landlock::kWrite | Landlock::kMakeDevice |
                             Landlock::kMakeSocket;
    known &= ~(Landlock::kMoveAcross | Landlock::kTruncate);
    known |= version >= 2 ? Landlock::kMoveAcross : 0;
    known |= version >= 3 ? Landlock::kTruncate : 0;
    known |= version >= 5 ? Landlock::kControlDevice : 0;
    return known;
}

} // namespace

Landlock::Landlock(int leastVersion) {
#ifdef FILEMAN_SANITIZED // the sanitizers read and write files of their own
    leastVersion = std::numeric_limits<int>::max();
#endif
    // A kernel without Landlock answers -1.
    const auto offered = static_cast<int>(::syscall(kCreateRuleset, nullptr, 0, kAskVersion));
    if (offered < leastVersion)
        return;
    m_known = knownRights(offered);
    const RulesetAttributes attributes = {m_known, offered >= kNetworkVersion ? kTcp : 0,
                                          offered >= kScopeVersion ? kScopes : 0};
    // An older kernel takes a longer structure when what it does not know is zero.
    m_rules = UniqueFd(static_cast<int>(::syscall(kCreateRuleset, &attributes, sizeof attributes, 0)));
}

void Landlock::allow(const std::string& path, Rights rights) {
    constexpr Rights kOfFiles = kExecute | kWriteFile | kReadFile | kTruncate | kControlDevice;
    if (!m_rules)
        return;
    const UniqueFd place(retryInterrupted([&] { return ::open(path.c_str(), O_PATH | O_CLOEXEC); }));
    if (!place && !reportUnlessAbsent("confine to", path, errno))
        return;
    struct stat status = {};
    if (place && ::fstat(place.get(), &status) == 0) {
        rights &= S_ISDIR(status.st_mode) ? m_known : m_known & kOfFiles;
        const PathBeneath rule = {rights, place.get()};
        if (::syscall(kAddRule, m_rules.get(), kPathBeneath, &rule, 0) == 0)
            return;
        reportErrno("confine to", path, errno);
    }
    m_rules.reset();
}

bool Landlock::enforce() const {
    return m_rules && ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::syscall(kRestrictSelf, m_rules.get(), 0) == 0;
}
