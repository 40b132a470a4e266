#include <sys/sysmacros.h>

#include <cstring>
#include <tuple>

#include "SupportFixture.h"

namespace {

class Proc : public SupportTest {
protected:
    // Starts a child that ignores these signals and ends after this time.
    static pid_t child(const std::vector<int>& ignored, useconds_t micros) {
        for (const int number : ignored)
            ::signal(number, SIG_IGN);
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::usleep(micros);
            ::_exit(0);
        }
        for (const int number : ignored)
            ::signal(number, SIG_DFL);
        if (micros == 0)
            ::waitid(P_PID, static_cast<id_t>(pid), nullptr, WEXITED | WNOWAIT);
        return pid;
    }

    // Starts a copy of sleep(1) named `program`, with `name` as its first argument.
    static pid_t sleeper(const char* program, const char* name, const std::string& more = "0") {
        fs::copy_file("/bin/sleep", program, fs::copy_options::skip_existing);
        const pid_t pid = ::fork();
        if (pid == 0)
            ::execl(program, name, "30", more.c_str(), nullptr);
        while (read("/proc/" + std::to_string(pid) + "/cmdline").rfind(name, 0) != 0)
            ::usleep(1000);
        return pid;
    }

    static void stop(pid_t pid) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }

    static long long microsNow() {
        timeval now = {};
        EXPECT_EQ(tr_get_clock(nullptr), tr_get_clock(&now));
        return now.tv_sec * 1000000LL + now.tv_usec;
    }
};

TEST_F(Proc, ReadWaitTellsReadableFromTimedOutAndClosed) {
    int empty[2];
    int ended[2];
    ASSERT_TRUE(::pipe(empty) == 0 && ::pipe(ended) == 0);
    ::close(ended[1]);
    limit(RLIMIT_NOFILE, 3000);
    const int high = ::dup2(ended[0], 2500); // above FD_SETSIZE
    const timeval shortly = {0, 30000};
    const timeval negative = {-1, 0};
    const std::tuple<int, const timeval*, int> rows[] = {{empty[0], nullptr, 0}, {ended[0], nullptr, 1},
                                                         {high, &shortly, 1},    {-1, &shortly, -1},
                                                         {2501, &shortly, -1},   {empty[0], &negative, -1}};
    for (const auto& [fd, timeout, result] : rows)
        EXPECT_EQ(result, tr_read_wait(fd, timeout)) << fd;

    // Signals neither end the wait nor prolong it.
    ::signal(SIGALRM, [](int) {});
    const long long start = microsNow();
    ::ualarm(3000, 3000);
    EXPECT_EQ(0, tr_read_wait(empty[0], &shortly));
    ::ualarm(0, 0);
    const long long waited = microsNow() - start;
    EXPECT_TRUE(waited >= 30000 && waited < 1000000) << waited;
}

TEST_F(Proc, TemporaryNameFitsItsBuffer) {
    char name[TR_TMPNAM_SIZE];
    EXPECT_EQ(name, tr_get_tmpnam(name));
    EXPECT_TRUE(std::regex_match(name, std::regex("/tmp/\\.tr_[0-9]{1,10}"))) << name;
    EXPECT_EQ(nullptr, tr_get_tmpnam(nullptr));
}

TEST_F(Proc, FoundByExecutableOrFirstArgument) {
    const pid_t first = sleeper("tr_exe_name", "/some/where/tr_arg_name");
    const pid_t second = sleeper("tr_exe_name", "other");
    pid_t found[3] = {-7, -7, -7};
    EXPECT_EQ(2, tr_get_pidarr("/any/dir/tr_exe_name", found, 3));
    EXPECT_EQ(first + second - 7, found[0] + found[1] + found[2]);
    EXPECT_EQ(1, tr_get_pidarr("tr_exe_name", found, 1));
    EXPECT_EQ(0, tr_get_pidarr("tr_exe_name", nullptr, 3));
    EXPECT_EQ(first, tr_get_pidof("tr_arg_name"));
    for (const char* name : {"tr_exe_nam", "/bin/", static_cast<const char*>(nullptr)})
        EXPECT_EQ(-1, tr_get_pidof(name));
    EXPECT_EQ(0, exitOf([&] { // this user may not read the links of root
                  return !becomeNobody() ||
                         (tr_get_pidof("tr_exe_name") == -1 && tr_get_pidof("tr_arg_name") == first);
              }));
    fs::remove("tr_exe_name");
    EXPECT_EQ(2, tr_get_pidarr("tr_exe_name", found, 3)) << "a removed executable";
    char name[TR_BASENAME_SIZE];
    EXPECT_EQ(0, tr_pid2basename(first, name));
    EXPECT_STREQ("tr_exe_name", name);
    stop(first);
    stop(second);
    EXPECT_EQ(-1, tr_pid2basename(first, name));
}

TEST_F(Proc, ArgumentsWithTheirNuls) {
    char buffer[TR_ARGV_SIZE + 1];
    buffer[TR_ARGV_SIZE] = '!';
    const pid_t wordy = sleeper("tr_sleep", "zero", std::string(9000, '0'));
    EXPECT_EQ(TR_ARGV_SIZE - 1, tr_pid2argv(wordy, buffer));
    EXPECT_EQ(0, std::memcmp("zero\00030\000000", buffer, 11));
    EXPECT_EQ(std::string("\0!", 2), std::string(buffer + TR_ARGV_SIZE - 1, 2));
    stop(wordy);
    EXPECT_EQ(-1, tr_pid2argv(wordy, buffer));
    const pid_t dead = child({}, 0);
    EXPECT_EQ(0, tr_pid2argv(dead, buffer));
    stop(dead);
}

TEST_F(Proc, KillWaitSendsSigtermThenSigsegvAndEndsWithTheChild) {
    limit(RLIMIT_CORE, 0);
    constexpr useconds_t kLong = 30000000;
    const struct {
        std::vector<int> ignored;
        useconds_t life;
        int doKill, timeoutUs;
        const char* said;
    } rows[] = {
        {{}, kLong, 1, 900000, "by SIGTERM.\nby usleep() ...\nwere killed by SIGTERM!\ndone!\n"},
        {{SIGTERM},
         kLong,
         1,
         20000,
         "by SIGTERM.\nby usleep() ...\nby SIGSEGV.\nkilled by SIGSEGV!\ndone!\n"},
        {{SIGTERM, SIGSEGV}, kLong, 1, 0, "by SIGTERM.\nby SIGSEGV.\ndone!\nkept"},
        {{}, kLong, 0, -5, "done!\nkept"},
        {{}, kLong, 0, 1200000, "by sleep(1) ...\nby usleep() ...\ndone!\nkept"},
        {{}, 100000, 0, 8000000, "by sleep(1) ...\nwere killed by SIGTERM!\ndone!\n"},
        {{}, 0, 1, 0, "already exited!\ndone!\n"},
    };
    for (const auto& row : rows) {
        std::string said;
        // On a busy machine a child may die too late for the times above, or at once.
        for (int attempt = 0; attempt < 4 && said != row.said; ++attempt) {
            const pid_t pid = child(row.ignored, row.life);
            pid_t kept = pid;
            int result = 1;
            const long long start = microsNow();
            said = logOf([&] { result = tr_proc_killwait(3, &kept, row.doKill, row.timeoutUs); });
            const std::regex prefix("dbg0.trcfg_utils_proc tr_proc_killwait. (.*process.pid=. )?");
            said = std::regex_replace(said, prefix, "");
            said += result == 0 && kept == 0 ? "" : result == -1 && kept == pid ? "kept" : "?";
            said += result == 0 && microsNow() - start > 800000 ? "late" : "";
            stop(pid);
        }
        EXPECT_EQ(row.said, said);
    }
    for (pid_t none : {0, -1})
        EXPECT_EQ("", logOf([&] { EXPECT_EQ(0, tr_proc_killwait(0, &none, 1, 0)); }));
}

TEST_F(Proc, InvokeSplitsAtBlanks) {
    fs::create_symlink("/bin/echo", "e");
    const std::tuple<const char*, const char*, std::string> rows[] = {
        {"/bin/cat", "  /proc/self/cmdline   /dev/null ", {"cat\0/proc/self/cmdline\0/dev/null\0", 33}},
        {"e", "1 2", "1 2\n"}, // the largest possible number of words
    };
    for (const auto& [app, args, said] : rows) {
        EXPECT_EQ(0, exitOf([app = app, args = args] {
                      ::dup2(::open("out", O_CREAT | O_TRUNC | O_WRONLY, 0600), STDOUT_FILENO);
                      tr_proc_invoke(2, app, args);
                      return false;
                  }));
        EXPECT_EQ(said, read("out"));
    }
    EXPECT_EQ("inf(trcfg_utils_proc tr_proc_invoke) running app not specified!\n"
              "inf(trcfg_utils_proc tr_proc_invoke) running app(none) doesn't exist!\n",
              logOf([] {
                  EXPECT_EQ(0, tr_proc_invoke(2, nullptr, "x"));
                  EXPECT_EQ(0, tr_proc_invoke(2, "none", nullptr));
                  EXPECT_EQ(0, tr_proc_invoke(-1, "/bin", nullptr)); // can be searched, but not run
              }));
}

// One character for each descriptor: '-' closed, '0' on /dev/null, '+' anything else.
std::string state(const std::vector<int>& descriptors) {
    std::string text;
    for (const int fd : descriptors) {
        struct stat status = {};
        const bool isOpen = ::fstat(fd, &status) == 0;
        text += !isOpen ? '-' : status.st_rdev == makedev(1, 3) ? '0' : '+';
    }
    return text;
}

TEST_F(Proc, CleanKeepsTheNamedDescriptors) {
    EXPECT_EQ(
        0, exitOf([] { // standard input was closed before
            for (const int fd : {STDOUT_FILENO, 10, 900})
                ::dup2(STDERR_FILENO, fd);
            ::close(STDIN_FILENO);
            return tr_proc_clean(0, 2, STDOUT_FILENO, 10) == 0 && state({0, 1, 2, 3, 10, 900}) == "0++-+-";
        }));
    EXPECT_EQ(0, exitOf([] { // one of these is not open
                  limit(RLIMIT_NOFILE, 40);
                  while (::dup(STDERR_FILENO) >= 0) {
                  }
                  ::close(39); // /dev/null gets this number, so none is left to list the others
                  return tr_proc_clean(0, 2, 20, 4000) == 0 && state({0, 1, 2, 19, 20, 39}) == "00+-+-";
              }));
    EXPECT_EQ("wrn(trcfg_utils_proc tr_proc_clean) clean descriptors of proc= failed!(ret=11)\n", logOf([] {
                  EXPECT_EQ(0, exitOf([] { return limit(RLIMIT_NOFILE, 3) && tr_proc_clean(1, 0) == -1; }));
              }));
}

} // namespace
