#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "TestFiles.h"
#include "cgi/CFileManCGI.h"
#include "cgi/delivery/UnsafeNames.h"
#include "cgi/staging/StagingArea.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

class Delivery : public FilesTest {
protected:
    StagingPlaces places(const std::string& area = "area") const {
        return {at(area), at(area + ".zip"), at(area + "/.zip/archive.zip"), at(area + ".lock"), "", "", 0};
    }
    // Waits for the turn in the area.
    std::unique_ptr<StagingArea> take(int wait = 1500) const {
        auto area = std::make_unique<StagingArea>(places());
        area->takeTurn(milliseconds(wait));
        return area;
    }
};

TEST_F(Delivery, AttachmentsOfEveryKindOfFile) {
    writeFile(at("a b.tar.gz"), std::string(100000, 'x'));
    writeFile(at("first"), "x");
    fs::create_hard_link(at("first"), at("second"));
    const std::tuple<std::string, int, std::string, std::size_t> rows[] = {
        {"a b.tar.gz", 0, "a b.tar.gz", 100000},
        {"a b.tar.gz", O_APPEND, "a b.tar.gz", 100000}, // sendfile refuses this kind of output
        {"second", 0, "second", 0},                     // below /tmp only files with one name are sent
        {"a\r\nb", 0, "a??b", 0}};
    for (const auto& [name, flags, shown, size] : rows) {
        testing::internal::CaptureStdout();
        ::fcntl(STDOUT_FILENO, F_SETFL, flags);
        EXPECT_EQ(1, CFileManCGI().downloadFile(at(name)));
        EXPECT_EQ("Content-Disposition:attachment;filename=" + shown +
                      "\r\nContent-Length:" + std::to_string(size) +
                      "\r\nContent-Type:application/octet-stream\r\n\r\n" + std::string(size, 'x'),
                  testing::internal::GetCapturedStdout());
    }
}

TEST(LeftOut, PlacesThatAreNotSafeInACommand) {
    const auto isRefused = [](const std::string& name, const std::string& directory,
                              const std::string& destination) {
        DownloadPlaces places;
        places.name = name;
        places.directory = directory;
        places.destination = destination;
        return downloadObstacle(places) != nullptr;
    };
    EXPECT_FALSE(isRefused("$(x)`;|&", "/home/-d.~#!=%,:@^+\xe9", "/tmp/$ [a"));
    for (const char* const name : {"", "-rf", "it's", "a\x7f"})
        EXPECT_TRUE(isRefused(name, "/home/d", "/tmp/x")) << name;
    for (const char c : std::string(" |&;<>()$`\\\"'*?[]{}\n\x7f"))
        EXPECT_TRUE(isRefused("a", std::string("/home/") + c, "/tmp/x")) << c;
    // Labels of the configuration are part of the destination.
    for (const char* const destination : {"/tmp/'", "/tmp/\x1f", "/tmp/download/[a]-[b/../../c]"})
        EXPECT_TRUE(isRefused("a", "/home/d", destination)) << destination;
    EXPECT_NE(nullptr, pdfObstacle("/home/a/x.ht\x7fml"));
    EXPECT_EQ(nullptr, pdfObstacle("/home/-d/a b's $(x)-.html"));
}

TEST_F(Delivery, NothingRunsInAnAreaThatIsNotHeld) {
    fs::create_symlink(at("elsewhere"), at("area.lock"));
    EXPECT_EQ(-1, take()->run(": > " + at("run")));
    EXPECT_FALSE(fs::exists(at("elsewhere")) || fs::exists(at("area")) || fs::exists(at("run")));
}

// A clean-up of /tmp may come before the turn of the request. It may not write in another directory by then.
TEST_F(Delivery, LostLockIsMadeAgainAndLostDirectoryIsNotUsed) {
    StagingArea lostLock(places());
    fs::remove(at("area.lock"));
    lostLock.takeTurn();
    EXPECT_TRUE(lostLock.isUsable() && fs::exists(at("area.lock")));
    StagingArea lostDirectory(places("other"));
    fs::rename(at("other"), at("moved"));
    lostDirectory.takeTurn();
    EXPECT_FALSE(lostDirectory.isUsable());
}

TEST_F(Delivery, LockOutlivesItsHolderUntilTheBackgroundCommandEnds) {
    {
        const auto holder = take();
        EXPECT_FALSE(take(0)->isUsable());
        EXPECT_EQ(0, ::mkfifo(at("area/fifo").c_str(), 0600));
        holder->run("read line < " + at("area/fifo") + " &");
    }
    EXPECT_FALSE(take(0)->isUsable());
    std::ofstream(at("area/fifo")) << "go on\n";
    EXPECT_TRUE(take(5000)->isUsable());
}

// The holder of the area gives signs of life until its clean-up has ended. A stopped holder gives none.
TEST_F(Delivery, RequestWaitsWhileTheHolderGivesSignsOfLife) {
    for (const bool isStopped : {false, true}) {
        fs::remove(at("held"));
        const pid_t holder = ::fork();
        if (holder == 0) {
            const auto area = take();
            writeFile(at("held"), "");
            area->cleanUp(milliseconds(2000));
            ::_exit(0);
        }
        while (!fs::exists(at("held")))
            std::this_thread::sleep_for(milliseconds(5));
        if (isStopped)
            ::kill(holder, SIGSTOP);
        EXPECT_EQ(!isStopped, take()->isUsable());
        ::kill(holder, SIGKILL);
        ::waitpid(holder, nullptr, 0);
    }
}

} // namespace
