#include <syslog.h>

#include <cerrno>
#include <cstdarg>
#include <utility>

#include "SupportFixture.h"

namespace {

std::string s_system;
const char* s_given = nullptr;

} // namespace

std::function<void()> g_atNextSystemLog = [] {};

// These two replace the functions of the C library, so that no system log is needed.
extern "C" void openlog(const char* ident, int option, int) {
    s_given = ident;
    s_system += "open " + std::to_string(option) + " ";
}

extern "C" void syslog(int priority, const char* format, ...) {
    char text[400];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    s_system += std::to_string(priority) + " " + text;
    std::exchange(g_atNextSystemLog, [] {})();
}

namespace {

class Log : public SupportTest {
protected:
    ~Log() override {
        tarnlog_with_clock = 0;
        ::unsetenv("tarnlog_with_clock");
    }
};

TEST_F(Log, LineNamesTheClampedLevel) {
    const Lines lines = logOf([] {
        tarnlog_enter(0, "a.c", "run", 7);
        for (const int level : {-9, 0, 2, 7, 8, 9})
            __tarnlog_internal(level, "%s %d%%", "x", level);
        errno = EDOM;
        __tarnlog_internal(1, "%s", std::string(300, 'm').c_str());
        EXPECT_EQ(EDOM, errno);
    });
    EXPECT_EQ((Lines{"err(a.c run) x -9%", "err(a.c run) x 0%", "inf(a.c run) x 2%", "dbg4(a.c run) x 7%",
                     "dbg4(a.c run) x 8%", "dbg4(a.c run) x 9%", "wrn(a.c run) " + std::string(255, 'm')}),
              lines);
}

TEST_F(Log, CallSiteLogsUpToTheNamedLevel) {
    const std::pair<const char*, int> rows[] = {
        {"err", 0}, {"dbg4", 7}, {"DBG4", -1}, {"", -1}, {nullptr, -1}};
    for (const auto& [name, highest] : rows) {
        EXPECT_EQ(highest, tarnlog_set_level(name));
        int evaluated = 0;
        const Lines lines = logOf([&] {
            for (int level = -1; level < 10; ++level)
                TARN_LOG_AS("a.c", "run", level, "%d", ++evaluated);
        });
        EXPECT_EQ(highest + 1, evaluated);
        EXPECT_EQ(static_cast<std::size_t>(highest + 1), lines.size());
    }
}

TEST_F(Log, ClockStampFromEnvironment) {
    const std::pair<const char*, int> rows[] = {
        {"", 0}, {"0", 0}, {"99999999999999999999", 2147483647}, {"3", 3}};
    for (const auto& [value, flag] : rows) {
        tarnlog_with_clock = 0;
        ::setenv("tarnlog_with_clock", value, 1);
        trcfg_open(0, "ignored");
        EXPECT_EQ(flag, tarnlog_with_clock) << value;
    }
    const Lines lines = logOf([] { TARN_LOG_AS("a.c", "run", 0, "m"); });
    EXPECT_TRUE(std::regex_match(lines.at(0), std::regex("err\\(a\\.c run\\)[0-9a-f]{6} m"))) << lines[0];
}

TEST_F(Log, SystemLogKeepsItsOwnCopyOfTheName) {
    s_system.clear();
    const Lines lines = logOf([] {
        std::string name = "tool";
        trcfg_open(1, name.c_str());
        name = "gone";
        EXPECT_STREQ("tool", s_given);
        tarnlog_enter(0, "b.c", "call", 12);
        __tarnlog_internal(0, "100%% %s", "%s");
        trcfg_close();
        trcfg_open(1, nullptr);
        trcfg_close();
        TARN_LOG_AS("a.c", "run", 0, "back");
    });
    EXPECT_EQ("open 0 6 err(b.c:0012 call) 100% %s\nopen " + std::to_string(LOG_PID) + " ", s_system);
    EXPECT_EQ(Lines{"err(a.c run) back"}, lines);
}

} // namespace
