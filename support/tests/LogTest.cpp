#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <utility>

#include "SupportFixture.h"

namespace {

std::string s_system;
const char* s_given = nullptr;

} // namespace

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
    errno = EIO;
}

namespace {

class Log : public SupportTest {};

TEST_F(Log, LineNamesTheClampedLevel) {
    const std::string log = logOf([] {
        tarnlog_enter(0, "a.c", "run", 7);
        for (const int level : {-9, 2, 9})
            __tarnlog_internal(level, "%s %d%%", "x", level);
        __tarnlog_internal(1, "%s", std::string(300, 'm').c_str());
    });
    const std::string longest(255, 'm');
    EXPECT_EQ("err(a.c run) x -9%\ninf(a.c run) x 2%\ndbg4(a.c run) x 9%\nwrn(a.c run) " + longest + "\n",
              log);
}

TEST_F(Log, CallSiteLogsUpToTheNamedLevel) {
    for (const auto& [name, highest] : {std::pair("err", 0), {"dbg4", 7}, {"DBG4", -1}, {nullptr, -1}}) {
        EXPECT_EQ(highest, tarnlog_set_level(name));
        int evaluated = 0;
        const std::string log = logOf([&] {
            for (int level = -1; level < 10; ++level)
                TARN_LOG_AS("a.c", "run", level, "%d", ++evaluated);
        });
        EXPECT_EQ(highest + 1, evaluated);
        EXPECT_EQ(evaluated, std::count(log.begin(), log.end(), '\n'));
    }
}

TEST_F(Log, ClockStampFromEnvironment) {
    for (const auto& [value, stamp] :
         {std::pair("", ""), {"0", ""}, {"1", "[0-9a-f]{6}"}, {"99999999999999", "[0-9a-f]{6}"}}) {
        ::setenv("tarnlog_with_clock", value, 1);
        trcfg_open(0, "ignored");
        const std::string log = logOf([] { TARN_LOG_AS("a.c", "run", 0, "m"); });
        EXPECT_TRUE(std::regex_match(log, std::regex(std::string("err.a.c run.") + stamp + " m\n"))) << log;
    }
    tarnlog_with_clock = 0;
    ::unsetenv("tarnlog_with_clock");
}

TEST_F(Log, SystemLogKeepsItsOwnCopyOfTheName) {
    const std::string log = logOf([] {
        std::string name = "tool";
        trcfg_open(1, name.c_str());
        name = "gone";
        EXPECT_STREQ("tool", s_given);
        tarnlog_enter(0, "b.c", "call", 12);
        errno = EDOM;
        __tarnlog_internal(0, "100%% %s", "%s");
        EXPECT_EQ(EDOM, errno);
        trcfg_open(1, nullptr);
        trcfg_close();
        TARN_LOG_AS("a.c", "run", 0, "back");
    });
    EXPECT_EQ("open 0 6 err(b.c:0012 call) 100% %s\nopen " + std::to_string(LOG_PID) + " ", s_system);
    EXPECT_EQ("err(a.c run) back\n", log);
}

} // namespace
