#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "TestFiles.h"
#include "cgi/CFileManCGI.h"
#include "cgi/delivery/Obstacles.h"
#include "cgi/staging/StagingArea.h"

namespace {

namespace fs = std::filesystem;

class Delivery : public FilesTest {
protected:
    std::string writeFile(const std::string& name, const std::string& content) const {
        return ::writeFile(at(name), content);
    }
    std::string readFile(const std::string& name) const { return ::readFile(at(name)); }

    StagingPlaces places() const {
        return {at("area"), at("area.zip"), at("area/.zip/archive.zip"), at("lock"), "", ""};
    }
    // Waits for the turn in the area.
    std::unique_ptr<StagingArea> take(int wait = 1500) const {
        auto area = std::make_unique<StagingArea>(places());
        area->takeTurn(std::chrono::milliseconds(wait));
        return area;
    }
};

std::string attachment(const std::string& name, std::size_t size) {
    return "Content-Disposition:attachment;filename=" + name + "\r\nContent-Length:" + std::to_string(size) +
           "\r\nContent-Type:application/octet-stream\r\n\r\n";
}

TEST_F(Delivery, HeadersAndBodiesOfEveryKindOfFile) {
    const std::string content = std::string(100000, 'x') + std::string("\0\r\n", 3);
    const std::string path = writeFile("a b.tar.gz", content);
    fs::create_directory(at("directory"));
    ::mkfifo(at("fifo").c_str(), 0600);
    const auto sent = [&](const std::string& name, int flags) {
        std::fflush(stdout);
        const int saved = ::dup(STDOUT_FILENO);
        const int file = ::open(at("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC | flags, 0600);
        ::dup2(file, STDOUT_FILENO);
        EXPECT_EQ(1, CFileManCGI().downloadFile(name));
        std::fflush(stdout);
        ::dup2(saved, STDOUT_FILENO);
        ::close(saved);
        ::close(file);
        return readFile("out");
    };
    for (const int flags : {0, O_APPEND}) // sendfile refuses the second kind of output
        EXPECT_EQ(attachment("a b.tar.gz", content.size()) + content, sent(path, flags));
    // Below /tmp only regular files of this user are sent.
    fs::create_symlink(path, at("link"));
    EXPECT_EQ(attachment("link", 0), sent(at("link"), 0));
    EXPECT_EQ(attachment("fifo", 0), sent(at("fifo"), 0));
    EXPECT_EQ(attachment("directory", 0), sent(at("directory"), 0));
    EXPECT_EQ(attachment("a??b", 0), sent(at("a\r\nb"), 0));
    fs::create_hard_link(path, at("second name"));
    EXPECT_EQ(attachment("a b.tar.gz", 0), sent(path, 0));
}

TEST(LeftOut, DownloadsOfRecordsThatAreNotSafeInACommand) {
    const auto refused = [](const std::string& name, const std::string& directory,
                            const std::string& destination) {
        DownloadPlaces places;
        places.name = name;
        places.directory = directory;
        places.destination = destination;
        return downloadObstacle(places) != nullptr;
    };
    for (const char* const name : {"a", "a b", "$(x)`;|&", "a-", "..", "\xff\xc3", "*?[\"\\"})
        EXPECT_FALSE(refused(name, "/home/d", std::string("/tmp/download/[") + name)) << name;
    for (const char* const name : {"", "-rf", "it's", "a\nb", "\x01", "a\x7f"})
        EXPECT_TRUE(refused(name, "/home/d", "/tmp/download/x")) << name;
    for (const char* const destination : {"/tmp/'", "/tmp/\t", "/tmp/\x1f"})
        EXPECT_TRUE(refused("a", "/home/d", destination)) << destination;
    for (const char c : std::string(" |&;<>()$`\\\"'*?[]{}\n\x7f"))
        EXPECT_TRUE(refused("a", std::string("/home/") + c, "/tmp/x")) << c;
    EXPECT_TRUE(refused("a", "/home/d", "/tmp/download/[a]-[b/../../c]"));
    EXPECT_FALSE(refused("a", "/home/-d.~#!=%,:@^+\xe9", "/tmp/ $x"));
}

TEST(LeftOut, PdfsOfPathsThatAreNotSafeInACommand) {
    for (const char* const path : {"/home/a b's/x.html", "/home/-d/x", "/home/a/.html", "/home/$(x)/y-"})
        EXPECT_EQ(nullptr, pdfObstacle(path)) << path;
    for (const char* const path : {"/home/a/-x.html", "/home/a\nb/x", "/home/a/x.ht\x7fml"})
        EXPECT_NE(nullptr, pdfObstacle(path)) << path;
}

TEST_F(Delivery, LeftoversAreRemovedWithoutFollowingLinks) {
    writeFile("kept/file", "kept");
    writeFile("area/old/deep/er/file", "");
    writeFile("area/.hidden", "");
    writeFile("area.zip", "");
    fs::create_directory_symlink(at("kept"), at("area/link"));
    ::chmod(at("area/old/deep").c_str(), 0);
    const auto area = take();
    EXPECT_TRUE(fs::exists(at("area.zip")));
    area->removeLeftovers();
    EXPECT_TRUE(fs::is_empty(at("area")));
    EXPECT_FALSE(fs::exists(at("area.zip")));
    EXPECT_EQ("kept", readFile("kept/file"));
}

TEST_F(Delivery, PlantedLinksAndDirectoriesAreReplaced) {
    writeFile("kept/file", "kept");
    fs::create_directory_symlink(at("kept"), at("area"));
    writeFile("area.zip/in/the/way", "");
    const auto area = take();
    EXPECT_TRUE(area->isUsable() && area->removeLeftovers());
    EXPECT_FALSE(fs::is_symlink(at("area")) || fs::exists(at("area.zip")));
    area->run("rm -rf " + at("area") + "/*");
    EXPECT_EQ("kept", readFile("kept/file"));
}

TEST_F(Delivery, NothingRunsInAnAreaThatIsNotHeld) {
    fs::create_symlink(at("elsewhere"), at("lock"));
    const auto area = take();
    EXPECT_FALSE(area->isUsable() || fs::exists(at("elsewhere")) || fs::exists(at("area")));
    EXPECT_EQ(-1, area->run(": > " + at("run")));
    EXPECT_FALSE(fs::exists(at("run")));
}

// A clean-up of /tmp may come before the turn of the request. It may not write in another directory by then.
TEST_F(Delivery, LostLockIsMadeAgainAndLostDirectoryIsNotUsed) {
    StagingArea lostLock(places());
    fs::remove(at("lock"));
    lostLock.takeTurn();
    EXPECT_TRUE(lostLock.isUsable() && fs::exists(at("lock")));
    StagingArea lostDirectory({at("b"), at("b.zip"), at("b/.zip/archive.zip"), at("b.lock"), "", ""});
    fs::rename(at("b"), at("moved"));
    lostDirectory.takeTurn();
    EXPECT_FALSE(lostDirectory.isUsable());
}

TEST_F(Delivery, LockOutlivesItsHolderUntilTheBackgroundCommandEnds) {
    const auto isFree = [&](int wait) { return take(wait)->isUsable(); };
    {
        const auto holder = take();
        EXPECT_FALSE(isFree(0));
        EXPECT_EQ(0, ::mkfifo(at("area/fifo").c_str(), 0600));
        holder->run("read line < " + at("area/fifo") + " &");
    }
    EXPECT_FALSE(isFree(0));
    std::ofstream(at("area/fifo")) << "go on\n";
    EXPECT_TRUE(isFree(5000));
}

// The holder of the area gives signs of life until its clean-up has ended. A stopped holder gives none.
TEST_F(Delivery, RequestWaitsWhileTheHolderGivesSignsOfLife) {
    using std::chrono::milliseconds;
    const auto startHolder = [&] {
        const pid_t holder = ::fork();
        if (holder == 0) {
            take()->cleanUp(milliseconds(2000));
            ::_exit(0);
        }
        while (!fs::exists(at("area")))
            std::this_thread::sleep_for(milliseconds(5));
        return holder;
    };
    const pid_t working = startHolder();
    EXPECT_TRUE(take()->isUsable());
    ::waitpid(working, nullptr, 0);
    fs::remove(at("area"));
    const pid_t stopped = startHolder();
    ::kill(stopped, SIGSTOP);
    EXPECT_FALSE(take()->isUsable());
    ::kill(stopped, SIGKILL);
    ::waitpid(stopped, nullptr, 0);
}

} // namespace
