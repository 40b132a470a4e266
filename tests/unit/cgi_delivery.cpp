#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <thread>

#include "TestFiles.h"
#include "cgi/CFileManCGI.h"
#include "cgi/delivery/Selection.h"
#include "cgi/delivery/StagingArea.h"

namespace {

namespace fs = std::filesystem;

class Delivery : public FilesTest {
protected:
    std::string writeFile(const std::string& name, const std::string& content) const {
        return ::writeFile(at(name), content);
    }
    std::string readFile(const std::string& name) const { return ::readFile(at(name)); }

    StagingArea::Places places() const { return {at("area/"), at("area.zip"), at("lock")}; }
};

std::string attachment(const std::string& name, std::size_t size) {
    return "Content-Disposition:attachment;filename=" + name + "\r\nContent-Length:" + std::to_string(size) +
           "\r\nContent-Type:application/octet-stream\r\n\r\n";
}

TEST_F(Delivery, HeadersAndBodiesOfEveryKindOfFile) {
    const std::string content = std::string(100000, 'x') + std::string("\0\r\n", 3);
    const std::string path = writeFile("a b.tar.gz", content);
    const std::string directory = at("directory");
    fs::create_directory(directory);
    struct stat status = {};
    ::stat(directory.c_str(), &status);
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
    EXPECT_EQ(attachment("fifo", 0), sent(at("fifo"), 0));
    EXPECT_EQ(attachment("directory", static_cast<std::size_t>(status.st_size)), sent(directory, 0));
}

TEST(LeftOut, DownloadsWhoseCommandsCannotCarryTheRecord) {
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
    EXPECT_FALSE(refused("a", "/home/-d.~#!=%,:@^+\xe9", "/tmp/ $x"));
}

TEST(LeftOut, PdfsWhoseTaskOrArchiveCannotCarryThePath) {
    for (const char* const path : {"/home/a b's/x.html", "/home/-d/x", "/home/a/.html", "/home/$(x)/y-"})
        EXPECT_EQ(nullptr, pdfObstacle(path)) << path;
    for (const char* const path : {"/home/a/-x.html", "/home/a\nb/x", "/home/a/x.ht\x7fml"})
        EXPECT_NE(nullptr, pdfObstacle(path)) << path;
}

TEST_F(Delivery, LeftoversGoWithoutFollowingLinks) {
    writeFile("kept/file", "kept");
    writeFile("area/old/deep/er/file", "");
    writeFile("area/.hidden", "");
    writeFile("area.zip", "");
    fs::create_directory_symlink(at("kept"), at("area/link"));
    ::chmod(at("area/old/deep").c_str(), 0);
    const StagingArea area(places());
    EXPECT_TRUE(fs::exists(at("area.zip")));
    area.removeLeftovers();
    EXPECT_TRUE(fs::is_empty(at("area")));
    EXPECT_FALSE(fs::exists(at("area.zip")));
    EXPECT_EQ("kept", readFile("kept/file"));
}

TEST_F(Delivery, PlantedLinksAreReplaced) {
    writeFile("kept/file", "kept");
    fs::create_directory_symlink(at("kept"), at("area"));
    fs::create_symlink(at("kept/file"), at("area.zip"));
    fs::create_symlink(at("kept/file"), at("lock"));
    const StagingArea area(places());
    EXPECT_TRUE(area.isLocked() && area.isUsable());
    EXPECT_FALSE(fs::is_symlink(at("area")) || fs::is_symlink(at("lock")) || fs::exists(at("area.zip")));
    area.run("rm -rf " + at("area") + "/*");
    EXPECT_EQ("kept", readFile("kept/file"));
}

TEST_F(Delivery, LockOutlivesItsHolderUntilTheBackgroundCommandEnds) {
    using std::chrono::milliseconds;
    const auto isFree = [&](int wait) { return StagingArea(places(), milliseconds(wait)).isLocked(); };
    {
        const StagingArea holder(places());
        EXPECT_FALSE(isFree(0));
        holder.run("sleep 0.2 &");
    }
    EXPECT_FALSE(isFree(0));
    EXPECT_TRUE(isFree(5000));
}

TEST_F(Delivery, QueueThatMovesIsWaitedOut) {
    using std::chrono::milliseconds;
    auto holder = std::make_unique<StagingArea>(places());
    std::thread others([&] {
        for (int turn = 0; turn < 10; ++turn) {
            std::this_thread::sleep_for(milliseconds(50));
            ::utimensat(AT_FDCWD, at("lock").c_str(), nullptr, 0);
        }
        holder.reset();
    });
    EXPECT_TRUE(StagingArea(places(), milliseconds(250)).isLocked());
    others.join();
}

} // namespace
