#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "trcfg_utils_filesys.h"
#include "trcfg_utils_proc.h"

using Lines = std::vector<std::string>;

// Runs once, at the next entry in the system log. So a test can act in the middle of a call.
extern std::function<void()> g_atNextSystemLog;

// Gives each test its own directory, and collects log lines.
class SupportTest : public testing::Test {
protected:
    SupportTest() {
        const char* base = std::getenv("TMPDIR");
        std::string name = std::string(base == nullptr ? "." : base) + "/support.XXXXXX";
        m_dir = std::filesystem::absolute(::mkdtemp(name.data())).lexically_normal();
        ::chmod(m_dir.c_str(), 0777); // for processes of other users
        ::umask(022);
        tarnlog_set_level("dbg4");
    }
    ~SupportTest() override { std::filesystem::remove_all(m_dir); }

    std::string at(const std::string& name) const { return m_dir + "/" + name; }

    // Returns what `action` writes to standard error. Paths are relative to the directory; line numbers and
    // process ids are removed.
    Lines logOf(const std::function<void()>& action) const {
        const int saved = ::dup(STDERR_FILENO);
        const int file = ::open(m_dir.c_str(), O_TMPFILE | O_RDWR | O_APPEND, 0600);
        ::dup2(file, STDERR_FILENO);
        action();
        ::dup2(saved, STDERR_FILENO);
        ::close(saved);
        std::ifstream text("/proc/self/fd/" + std::to_string(file));
        Lines lines;
        for (std::string line; std::getline(text, line); lines.push_back(line)) {
            line = std::regex_replace(line, std::regex(":[0-9]{4,} "), " ");
            line = std::regex_replace(line, std::regex(m_dir + "/"), "");
            line = std::regex_replace(line, std::regex("(pid=|proc=|usleep\\()[0-9]+"), "$1N");
        }
        ::close(file);
        return lines;
    }

    // Returns the exit status of a child that runs `body`: 0 if `body` returned true.
    static int exitOf(const std::function<bool()>& body) {
        const pid_t pid = ::fork();
        if (pid == 0)
            ::_exit(body() ? 0 : 1);
        int status = -1;
        ::waitpid(pid, &status, 0);
        return status;
    }

    // The same, with the directory of the test as root directory and working directory. So a fault can damage
    // nothing else, and another user can work there although the directories above belong to others.
    int exitInOwnRoot(const std::function<bool()>& body) const {
        return exitOf([&] { return enterOwnRoot() && body(); });
    }
    bool canHaveOwnRoot() const {
        return exitInOwnRoot([] { return true; }) == 0;
    }

    static bool becomeNobody() { return ::geteuid() == 0 && ::setgid(65534) == 0 && ::setuid(65534) == 0; }

    static bool limit(__rlimit_resource resource, rlim_t value) {
        const rlimit both = {value, value};
        return ::setrlimit(resource, &both) == 0;
    }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(at(name)) << content;
    }

    void link(const std::string& target, const std::string& name) const {
        ASSERT_EQ(0, ::symlink(target.c_str(), at(name).c_str()));
    }

    std::string read(const std::string& name) const {
        std::ifstream file(at(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Returns type and permissions, for example "d755", "-644" or "p600"; "l" for a link; "none".
    std::string kind(const std::string& name) const {
        struct stat status = {};
        if (::lstat(at(name).c_str(), &status) != 0)
            return "none";
        if (S_ISLNK(status.st_mode))
            return "l";
        const char type = S_ISDIR(status.st_mode) ? 'd' : S_ISFIFO(status.st_mode) ? 'p' : '-';
        char mode[8];
        std::snprintf(mode, sizeof mode, "%o", status.st_mode & 07777U);
        return type + std::string(mode);
    }

    std::string m_dir;

private:
    bool enterOwnRoot() const {
        if (::geteuid() != 0 && ::unshare(CLONE_NEWUSER) != 0)
            return false;
        return ::chroot(m_dir.c_str()) == 0 && ::chdir("/") == 0;
    }
};
