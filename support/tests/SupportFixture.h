#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
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
#include <sstream>
#include <string>
#include <vector>

#include "trcfg_utils_filesys.h"
#include "trcfg_utils_proc.h"

namespace fs = std::filesystem;

// Each test works in its own directory, which is the working directory.
class SupportTest : public testing::Test {
protected:
    SupportTest() {
        fs::current_path(m_dir);
        ::chmod(".", 0777); // for processes of other users
        ::umask(022);
        tarnlog_set_level("dbg4");
    }
    ~SupportTest() override {
        fs::current_path("/");
        fs::remove_all(m_dir);
    }

    // Returns what `action` writes to standard error, without line numbers, process ids and short times.
    static std::string logOf(const std::function<void()>& action) {
        testing::internal::CaptureStderr();
        action();
        return std::regex_replace(testing::internal::GetCapturedStderr(),
                                  std::regex(":[0-9]{4}(?= )|(pid=|proc=|usleep\\()[0-9]+"), "$1");
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

    // The same, with the directory of the test as root directory. So a fault can damage nothing else, and
    // another user can work there although the directories above belong to others.
    static int exitInOwnRoot(const std::function<bool()>& body) {
        return exitOf([&] { return ::chroot(".") == 0 && body(); });
    }

    static bool becomeNobody() { return ::geteuid() == 0 && ::setgid(65534) == 0 && ::setuid(65534) == 0; }

    static bool limit(__rlimit_resource resource, rlim_t value) {
        const rlimit both = {value, value};
        return ::setrlimit(resource, &both) == 0;
    }

    static void makeTrees(const std::vector<std::string>& directories) {
        for (const std::string& directory : directories)
            fs::create_directories(directory);
    }
    static void write(const std::string& name, const std::string& text) { std::ofstream(name) << text; }
    static std::string read(const std::string& name) {
        std::ifstream file(name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Returns the octal modes with their types: 40755 a directory, 100644 a file, 10600 a named pipe, 120777
    // a link, 0 nothing.
    static std::string modes(const std::vector<std::string>& names) {
        std::ostringstream text;
        for (const std::string& name : names) {
            struct stat status = {};
            ::lstat(name.c_str(), &status);
            text << (name == names.front() ? "" : " ") << std::oct << status.st_mode;
        }
        return text.str();
    }

private:
    std::string m_name = testing::TempDir() + "/support.XXXXXX";
    const std::string m_dir = ::mkdtemp(m_name.data());
};
