// Several processes work on one path at the same time. Rounds and time are limited.
#include <sched.h>
#include <sys/mman.h>

#include <atomic>
#include <cerrno>
#include <utility>

#include "SupportFixture.h"

namespace {

std::function<void()> s_beforeLook = [] {};
std::function<void()> s_afterLook = [] {};

} // namespace

// Replaces the function of the C library, so that a test can act like another process at the next call.
extern "C" int lstat(const char* path, struct stat* status) noexcept {
    std::exchange(s_beforeLook, [] {})();
    const int result = ::fstatat(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
    const int savedErrno = errno;
    std::exchange(s_afterLook, [] {})();
    errno = savedErrno;
    return result;
}

namespace {

constexpr int kRounds = 400;
constexpr int kSeconds = 2;

class Race : public SupportTest {
protected:
    Race() {
        void* const memory =
            ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        m_shared = new (memory) Shared{};
    }
    ~Race() override { ::munmap(m_shared, sizeof(Shared)); }

    // Runs `body` (round, process) in this number of processes, which begin and end each round together.
    // Returns the number of calls that returned false.
    int failuresOf(int processes, const std::function<bool(int, int)>& body) const {
        const time_t end = tr_get_clock(nullptr) + kSeconds;
        std::vector<pid_t> racers;
        for (int process = 0; process < processes; ++process) {
            racers.push_back(::fork());
            if (racers.back() == 0) {
                ::alarm(4 * kSeconds); // also if the others hang
                race(process, processes, end, body);
                ::_exit(0);
            }
        }
        for (const pid_t racer : racers) {
            int status = -1;
            ::waitpid(racer, &status, 0);
            EXPECT_EQ(0, status);
        }
        EXPECT_GE(m_shared->rounds, 1);
        return m_shared->failures;
    }

private:
    struct Shared {
        std::atomic<int> arrived, failures, rounds;
    };

    void race(int process, int processes, time_t end,
              const std::function<bool(int, int)>& body) const noexcept {
        for (int round = 0; round < kRounds; ++round) {
            // The first process decides for all of them whether there is time for another round.
            if (process == 0 && tr_get_clock(nullptr) < end)
                m_shared->rounds = round + 1;
            meet(processes * (2 * round + 1));
            if (m_shared->rounds <= round)
                return;
            if (!body(round, process))
                ++m_shared->failures;
            meet(processes * (2 * round + 2));
        }
    }

    void meet(int expected) const {
        ++m_shared->arrived;
        while (m_shared->arrived < expected)
            ::sched_yield();
    }

    Shared* m_shared;
};

TEST_F(Race, ObjectsMadeByOthersStay) {
    for (const bool inTheWay : {false, true}) {
        const std::string place = inTheWay ? "b" : "a";
        const auto act = [&] {
            ::unlink(at(place).c_str());
            ::mkdir(at(place).c_str(), 0755);
            write(place + "/new", "new");
        };
        if (inTheWay)
            write(place, "in the way");
        (inTheWay ? s_afterLook : s_beforeLook) = act;
        EXPECT_EQ(0, tr_mkdir(at(place).c_str(), 0755));
        EXPECT_EQ("new", read(place + "/new"));
    }
}

TEST_F(Race, DirectoriesAreMadeTogether) {
    const auto file = [](int round, int process) {
        return std::to_string(round) + "/sub/" + std::to_string(process);
    };
    const Lines lines = logOf([&] {
        tarnlog_set_level("err");
        EXPECT_EQ(0, failuresOf(3, [&](int round, int process) {
                      const bool made = tr_mkdir_parent(at(file(round, process)).c_str(), 0755) == 0;
                      write(file(round, process), "x");
                      return made && (round == 0 || read(file(round - 1, process)) == "x");
                  }));
    });
    EXPECT_EQ(Lines{}, lines);
}

TEST_F(Race, RemovingTogetherIsNoFailure) {
    const Lines lines = logOf([&] {
        tarnlog_set_level("err");
        EXPECT_EQ(0, failuresOf(4, [&](int round, int process) {
                      const std::string tree = std::to_string(round % 2);
                      if (process == 0) { // the tree of the next round
                          for (int number = 0; number < 12; ++number) {
                              const std::string sub =
                                  std::to_string(1 - round % 2) + "/" + std::to_string(number);
                              std::filesystem::create_directories(at(sub + "/deep"));
                              write(sub + "/deep/file", "");
                              write(sub + "/file", "");
                          }
                      }
                      return tr_rmdir(at(tree).c_str(), 1) == 0;
                  }));
    });
    EXPECT_EQ(Lines{}, lines);
}

TEST_F(Race, InstalledFileIsAlwaysWhole) {
    const std::string old(100000, 'o');
    write("dst", old);
    write("src", std::string(100000, 'n'));
    EXPECT_EQ(0, failuresOf(2, [&](int, int process) {
                  if (process == 0)
                      return tr_install_file(at("src").c_str(), at("dst").c_str(), 0644) == 0;
                  return read("dst").size() == old.size();
              }));
    EXPECT_EQ(read("src"), read("dst"));
}

} // namespace
