#include <sys/sysmacros.h>
#include <sys/time.h>

#include <algorithm>
#include <cstring>

#include "SupportFixture.h"

namespace {

class Proc : public SupportTest {
protected:
    // Starts a child that runs `body`. Returns after `body` has ended or has become another program.
    static pid_t child(const std::function<void()>& body) {
        int ready[2];
        EXPECT_EQ(0, ::pipe2(ready, O_CLOEXEC));
        const pid_t pid = ::fork();
        if (pid == 0) {
            body();
            ::close(ready[0]);
            ::close(ready[1]);
            for (;;)
                ::pause();
        }
        char end = 0;
        ::close(ready[1]);
        EXPECT_EQ(0, ::read(ready[0], &end, 1));
        ::close(ready[0]);
        return pid;
    }

    // Starts a child that runs a copy of sleep(1) named `program`, with `name` as its first argument.
    pid_t sleeper(const std::string& program, const std::string& name, const std::string& more = "0") const {
        std::filesystem::copy_file("/bin/sleep", at(program), std::filesystem::copy_options::skip_existing);
        return child([&] { ::execl(at(program).c_str(), name.c_str(), "30", more.c_str(), nullptr); });
    }

    static pid_t zombie() {
        const pid_t pid = child([] {});
        siginfo_t info;
        ::kill(pid, SIGKILL);
        ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT);
        return pid;
    }

    // Stops a child that ignores these signals. Returns the signals in the log, the result, whether the id is
    // kept, and whether the child still runs.
    std::string stopped(const std::vector<int>& ignored, int doKill, int timeoutUs) const {
        const pid_t pid = child([&] {
            limit(RLIMIT_CORE, 0);
            ::signal(SIGSEGV, SIG_DFL);
            for (const int number : ignored)
                ::signal(number, SIG_IGN);
        });
        pid_t kept = pid;
        int result = 1;
        std::string text;
        for (const std::string& line :
             logOf([&] { result = tr_proc_killwait(3, &kept, doKill, timeoutUs); })) {
            const std::size_t place = line.find(" by SIG");
            text += place == std::string::npos ? "" : line.substr(place + 4) + " ";
        }
        text += std::to_string(result) + (kept == pid ? " 1" : " 0") + (::kill(pid, 0) == 0 ? " 1" : " 0");
        stop(pid);
        return text;
    }

    static void stop(pid_t pid) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
};

long long microsNow() {
    timeval now = {};
    EXPECT_EQ(tr_get_clock(nullptr), tr_get_clock(&now));
    return now.tv_sec * 1000000LL + now.tv_usec;
}

TEST_F(Proc, ReadWait) {
    int empty[2];
    int filled[2];
    int ended[2];
    ASSERT_TRUE(::pipe(empty) == 0 && ::pipe(filled) == 0 && ::pipe(ended) == 0);
    ASSERT_EQ(1, ::write(filled[1], "x", 1));
    ::close(ended[1]);
    limit(RLIMIT_NOFILE, 3000);
    const int high = ::dup2(filled[0], 2500); // above FD_SETSIZE
    const timeval shortly = {0, 30000};
    const timeval negative = {-1, 0};
    // clang-format off
    const struct { const timeval* timeout; int fd, result; } rows[] = {
        {nullptr, empty[0], 0}, {&shortly, empty[0], 0}, {nullptr, filled[0], 1}, {nullptr, ended[0], 1},
        {&shortly, high, 1}, {&shortly, -1, -1}, {&shortly, 2501, -1}, {nullptr, 2147483647, -1},
        {&negative, empty[0], -1},
    };
    // clang-format on
    for (const auto& row : rows)
        EXPECT_EQ(row.result, tr_read_wait(row.fd, row.timeout)) << row.fd;

    // Signals neither end the wait nor prolong it.
    struct sigaction interrupting = {};
    interrupting.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &interrupting, nullptr);
    const itimerval ticks = {{0, 3000}, {0, 3000}};
    const itimerval none = {};
    const long long start = microsNow();
    ::setitimer(ITIMER_REAL, &ticks, nullptr);
    EXPECT_EQ(0, tr_read_wait(empty[0], &shortly));
    ::setitimer(ITIMER_REAL, &none, nullptr);
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
    EXPECT_EQ(0, tr_get_pidarr("tr_exe_name", found, 0) + tr_get_pidarr("tr_exe_name", nullptr, 3));
    EXPECT_EQ(first, tr_get_pidof("tr_arg_name"));
    EXPECT_EQ(-3, tr_get_pidof("tr_exe_nam") + tr_get_pidof(nullptr) + tr_get_pidof("/bin/"));
    EXPECT_EQ(0, exitOf([&] { // this user may not read the links of root
                  return !becomeNobody() ||
                         (tr_get_pidof("tr_exe_name") == -1 && tr_get_pidof("tr_arg_name") == first);
              }));
    std::filesystem::remove(at("tr_exe_name"));
    EXPECT_EQ(2, tr_get_pidarr("tr_exe_name", found, 3)) << "a removed executable";
    char name[TR_BASENAME_SIZE];
    EXPECT_EQ(0, tr_pid2basename(first, name));
    EXPECT_STREQ("tr_exe_name", name);
    stop(first);
    stop(second);
    EXPECT_EQ(-1, tr_pid2basename(first, name));
    EXPECT_EQ(-1, tr_pid2basename(::getpid(), nullptr));
}

TEST_F(Proc, FindsItselfToo) {
    const std::string own = std::filesystem::read_symlink("/proc/self/exe").filename();
    pid_t found[100];
    const int count = tr_get_pidarr(own.c_str(), found, 100);
    EXPECT_EQ(1, std::count(found, found + std::max(count, 0), ::getpid()));
}

TEST_F(Proc, ArgumentsWithTheirNuls) {
    char buffer[TR_ARGV_SIZE + 1];
    buffer[TR_ARGV_SIZE] = '!';
    const pid_t wordy = sleeper("tr_sleep", "zero", std::string(9000, '0'));
    const pid_t dead = zombie();
    EXPECT_EQ(TR_ARGV_SIZE - 1, tr_pid2argv(wordy, buffer));
    EXPECT_EQ(0, std::memcmp("zero\00030\000000", buffer, 11));
    EXPECT_EQ(std::string("\0!", 2), std::string(buffer + TR_ARGV_SIZE - 1, 2));
    EXPECT_EQ(0, tr_pid2argv(dead, buffer));
    EXPECT_EQ(-1, tr_pid2argv(-1, buffer));
    EXPECT_EQ(-1, tr_pid2argv(::getpid(), nullptr));
    stop(wordy);
    stop(dead);
}

TEST_F(Proc, KillWaitSendsSigtermThenSigsegv) {
    // clang-format off
    const struct { std::vector<int> ignored; int doKill, timeoutUs; const char* steps; } rows[] = {
        {{}, 1, 100000, "SIGTERM. SIGTERM! 0 0 0"},
        {{SIGTERM}, 1, 20000, "SIGTERM. SIGSEGV. SIGSEGV! 0 0 0"},
        {{SIGTERM, SIGSEGV}, 1, 0, "SIGTERM. SIGSEGV. -1 1 1"},
        {{}, 0, -5, "-1 1 1"},
    };
    // clang-format on
    for (const auto& row : rows) {
        std::string steps = stopped(row.ignored, row.doKill, row.timeoutUs);
        // On a busy machine a child may die too late for the times above.
        for (int again = 0; again < 3 && steps != row.steps; ++again)
            steps = stopped(row.ignored, row.doKill, row.timeoutUs);
        EXPECT_EQ(row.steps, steps);
    }
}

TEST_F(Proc, KillWaitSleepsInWholeSecondsFirst) {
    pid_t waiting = child([] {});
    pid_t dead = zombie();
    const pid_t pid = waiting;
    const Lines lines = logOf([&] {
        EXPECT_EQ(-1, tr_proc_killwait(0, &waiting, 0, 1200000));
        EXPECT_EQ(0, tr_proc_killwait(0, &dead, 1, 0));
        for (pid_t none : {0, -1})
            EXPECT_EQ(0, tr_proc_killwait(0, &none, 1, 0));
        EXPECT_EQ(0, tr_proc_killwait(0, nullptr, 1, 0));
    });
    stop(pid);
    const std::string start = "err(trcfg_utils_proc tr_proc_killwait) ";
    EXPECT_EQ(
        (Lines{start + "wait process(pid=N) by sleep(1) ...", start + "wait process(pid=N) by usleep(N) ...",
               start + "done!", start + "process(pid=N) already exited!", start + "done!"}),
        lines);
}

TEST_F(Proc, KillWaitEndsWithTheChild) {
    pid_t pid = child([] {
        ::signal(SIGALRM, SIG_DFL);
        ::ualarm(100000, 0);
    });
    const long long start = microsNow();
    const Lines lines = logOf([&] { EXPECT_EQ(0, tr_proc_killwait(3, &pid, 0, 8000000)); });
    EXPECT_LT(microsNow() - start, 950000);
    const std::string begin = "dbg0(trcfg_utils_proc tr_proc_killwait) ";
    EXPECT_EQ((Lines{begin + "wait process(pid=N) by sleep(1) ...",
                     begin + "process(pid=N) were killed by SIGTERM!", begin + "done!"}),
              lines);
}

TEST_F(Proc, InvokeSplitsAtBlanks) {
    EXPECT_EQ(0, exitOf([&] {
                  ::dup2(::open(at("out").c_str(), O_CREAT | O_WRONLY, 0600), STDOUT_FILENO);
                  tr_proc_invoke(2, "/bin/cat", "  /proc/self/cmdline   /dev/null ");
                  return false;
              }));
    EXPECT_EQ(std::string("cat\0/proc/self/cmdline\0/dev/null\0", 33), read("out"));
    // The largest possible number of words: the null pointer after them needs a place too.
    link("/bin/echo", "e");
    for (const std::string args : {"1", "1 2", "1 2 3 4"}) {
        EXPECT_EQ(0, exitOf([&] {
                      ::dup2(::open(at("out").c_str(), O_TRUNC | O_WRONLY), STDOUT_FILENO);
                      tr_proc_invoke(0, at("e").c_str(), args.c_str());
                      return false;
                  }));
        EXPECT_EQ(args + "\n", read("out"));
    }
    const Lines lines = logOf([&] {
        EXPECT_EQ(0, tr_proc_invoke(2, nullptr, "x"));
        EXPECT_EQ(0, tr_proc_invoke(2, at("none").c_str(), nullptr));
        EXPECT_EQ(0, tr_proc_invoke(-1, "/bin", nullptr)); // a directory: it can be searched, but not run
    });
    const std::string start = "inf(trcfg_utils_proc tr_proc_invoke) running app";
    EXPECT_EQ((Lines{start + " not specified!", start + "(none) doesn't exist!"}), lines);
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
    const Lines lines = logOf([] {
        EXPECT_EQ(0, exitOf([] {
                      for (const int fd : {0, 1, 10, 11, 900})
                          ::dup2(STDERR_FILENO, fd);
                      return tr_proc_clean(0, 2, 11, 4000) == 0 &&
                             state({0, 1, 2, 3, 4, 10, 11, 900}) == "00+---+-";
                  }))
            << "one kept, one that is not open";
        EXPECT_EQ(0, exitOf([] {
                      ::dup2(STDERR_FILENO, STDOUT_FILENO);
                      ::close(STDIN_FILENO);
                      return tr_proc_clean(0, 1, STDOUT_FILENO) == 0 && state({0, 1, 2, 3}) == "0++-";
                  }))
            << "standard output kept, standard input closed before";
        EXPECT_EQ(0, exitOf([] {
                      limit(RLIMIT_NOFILE, 40);
                      while (::dup(STDERR_FILENO) >= 0) {
                      }
                      ::close(39); // /dev/null gets this number, so none is left to list the others
                      return tr_proc_clean(0, 1, 20) == 0 && state({0, 1, 2, 19, 20, 39}) == "00+-+-";
                  }))
            << "a full table";
        EXPECT_EQ(0, exitOf([] { return limit(RLIMIT_NOFILE, 3) && tr_proc_clean(1, 0) == -1; }))
            << "no place";
    });
    EXPECT_EQ(Lines{"wrn(trcfg_utils_proc tr_proc_clean) clean descriptors of proc=N failed!(ret=11)"},
              lines);
}

} // namespace
