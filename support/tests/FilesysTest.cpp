#include <algorithm>

#include "SupportFixture.h"

namespace {

class Filesys : public SupportTest {};

// Some rules can only be tried with a root directory or a second user of one's own.
class FilesysAsRoot : public SupportTest {
    void SetUp() override {
        if (::geteuid() != 0)
            GTEST_SKIP() << "needs root rights";
    }
};

TEST_F(Filesys, DirectoriesAreMadeFromTheTop) {
    makeTrees({"real"});
    write("file", "in the way");
    fs::create_symlink("real", "link");
    fs::create_symlink("nowhere", "dangling");
    const std::string log = logOf([] {
        for (const char* name : {"a/b//c/", "a/b", "link/y", "dangling", "new/../other"})
            EXPECT_EQ(0, tr_mkdir(name, 0750));
        EXPECT_EQ(0, tr_mkdir_parent("file/x", 0755));
    });
    EXPECT_EQ(8, std::count(log.begin(), log.end(), '\n')) << "a line for each directory made\n" << log;
    EXPECT_EQ("40750 40755 120777 40750", modes({"a/b/c", "file", "link", "real/y"}));
}

TEST_F(FilesysAsRoot, RootDirectoryStays) {
    makeTrees({"dir"});
    write("src", "stays");
    fs::create_symlink("/", "root");
    EXPECT_EQ(0, exitInOwnRoot([] {
                  bool kept = true;
                  for (const char* name : {"/", "//", "/..", "dir/..", "root/."})
                      kept = kept && tr_rmdir(name, 1) == -1 && tr_mkfifo(name, 0600) == -1 &&
                             tr_mksymlink("x", name) == -1 && tr_install_file("src", name, 0600) == -1;
                  for (const char* name : {"/", "//name", "name", "."})
                      kept = kept && tr_mkdir_parent(name, 0755) == 0;
                  return kept && tr_mkdir("//", 0755) == 0 && tr_rmdir("root//", 1) == 0;
              }));
    EXPECT_EQ("40755 100644 0", modes({"dir", "src", "root"}));
}

TEST_F(Filesys, FailuresNameTheStepAndRemoveNothing) {
    makeTrees({"dir"});
    write("dir/src", "source");
    write("dst", "old");
    ::mkfifo("fifo", 0600);
    fs::create_symlink("dir/src", "alias");
    char buffer[8];
    std::size_t size = sizeof buffer;
    const struct {
        std::function<int()> call;
        const char* line; // without the function name
    } rows[] = {
        {[] { return tr_mkdir(nullptr, 0755); }, "build directory((null)) failed!(ret=1)"},
        {[] { return tr_mkdir("/proc/a/b", 0755); }, "build directory(/proc/a/b) failed!(ret=11)"},
        {[] { return tr_rmdir(nullptr, 1); }, "remove storage path(full_name=(null)) failed(ret=1)"},
        {[] { return tr_rmdir("dst", 0); }, "remove storage path(full_name=dst) failed(ret=11)"},
        {[] { return tr_mkfifo("dir/..", 0600); }, "build fifo device(dir/..) failed!(ret=1)"},
        {[] { return tr_mkfifo("/proc/no", 0600); }, "build fifo device(/proc/no) failed!(ret=21)"},
        {[] { return tr_mksymlink(nullptr, "dst"); }, "build symbol link (dst) failed!(ret=1)"},
        {[] { return tr_mksymlink("x", "/proc/no"); }, "build symbol link (/proc/no) failed!(ret=21)"},
        {[] { return tr_install_file("fifo", "dst", 0644); }, "--> \"dst\" install failed!(ret=12)"},
        {[] { return tr_install_file("alias", "dir/src", 0644); }, "--> \"dir/src\" install failed!(ret=3)"},
        {[] { return tr_install_file("dir/src", "dir", 0644); }, "--> \"dir\" install failed!(ret=3)"},
        {[] { return tr_install_file("dst", "/proc/no", 0644); }, "--> \"/proc/no\" install failed!(ret=13)"},
        {[] { return tr_newmark_file("fifo", "x", 0644); }, "build mark file(fifo) failed!(ret=11)"},
        {[&] { return tr_sysctl_readwrite("/dev/null", buffer, &size, nullptr, 0); },
         "access kernel parameter(/dev/null) failed!(ret=12)"},
        {[] { return tr_sysctl_readwrite("/dev/full", nullptr, nullptr, "text", 4); },
         "access kernel parameter(/dev/full) failed!(ret=22)"},
    };
    for (const auto& row : rows) {
        const std::string log = logOf([&] { EXPECT_EQ(-1, row.call()) << row.line; });
        EXPECT_NE(std::string::npos, log.find(std::string(row.line) + "\n")) << row.line << " not in " << log;
        EXPECT_EQ("old source", read("dst") + " " + read("dir/src")) << row.line;
    }
}

TEST_F(Filesys, RemovalWithoutForceKeepsFiles) {
    makeTrees({"tree/empty/deep", "tree/full", "hollow/a/b"});
    write("tree/full/file", "");
    const std::string log = logOf([] {
        EXPECT_EQ(-1, tr_rmdir("tree", 0));
        EXPECT_EQ(0, tr_rmdir("hollow", 0));
        EXPECT_EQ(0, tr_rmdir("nothing", 0));
    });
    EXPECT_EQ(
        "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree/full/file) failed(ret=11)\n"
        "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree/full) failed(ret=101)\n"
        "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree) failed(ret=101)\n"
        "inf(trcfg_utils_filesys tr_rmdir) storage path(full_name=hollow) have been removed\n",
        log);
    EXPECT_EQ("0 0", modes({"tree/empty", "hollow"}));
}

TEST_F(Filesys, RemovalNeverFollowsLinks) {
    makeTrees({"outside/inner", "tree/sub"});
    fs::create_symlink("../../outside", "tree/sub/link");
    fs::create_symlink("outside", "link");
    EXPECT_EQ(0, tr_rmdir("tree//", 1));
    EXPECT_EQ(0, tr_rmdir("link/", 1));
    EXPECT_EQ("0 0 40755", modes({"tree", "link", "outside/inner"}));
}

TEST_F(Filesys, RemovalNeedsFewDescriptorsAndNoShortPaths) {
    EXPECT_EQ(0, exitOf([] {
                  for (int level = 0; level < 1000; ++level) {
                      fs::create_directories("deep/side");
                      fs::current_path("deep");
                  }
                  return true;
              }));
    EXPECT_EQ(0, exitOf([] { return limit(RLIMIT_NOFILE, 20) && tr_rmdir("deep", 1) == 0; }));
    EXPECT_EQ("0", modes({"deep"}));
}

TEST_F(FilesysAsRoot, RemovalContinuesAfterAFailure) {
    makeTrees({"tree/a/locked", "tree/z/free"});
    write("tree/a/locked/file", "");
    for (const char* name : {"tree", "tree/a", "tree/z", "tree/a/locked"})
        ASSERT_EQ(0, ::chown(name, 65534, 65534));
    ::chmod("tree/a/locked", 0644); // readable, but its entries and ".." cannot be used
    const std::string log = logOf(
        [] { EXPECT_EQ(0, exitInOwnRoot([] { return becomeNobody() && tr_rmdir("tree", 1) == -1; })); });
    EXPECT_EQ(
        "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree/a/locked) failed(ret=101)\n"
        "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree/a) failed(ret=101)\n"
        "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree) failed(ret=101)\n",
        log);
    EXPECT_EQ("0", modes({"tree/z"}));
}

TEST_F(FilesysAsRoot, MissingParentsGetNoSearchPermission) {
    write("src", "x");
    makeTrees({"p/fifo/tree"}); // this object is in the way
    EXPECT_EQ(0, tr_mkfifo("p/fifo", 0600));
    EXPECT_EQ(0, tr_mksymlink("some target", "s/link"));
    EXPECT_EQ(0, tr_install_file("src", "i/file", 0640));
    EXPECT_EQ(0, exitInOwnRoot([] { return becomeNobody() && tr_mkfifo("user/q/fifo", 0600) == -1; }));
    EXPECT_EQ("10600 40644 120777 40644 100640 40644",
              modes({"p/fifo", "s", "s/link", "i", "i/file", "user"}));
}

TEST_F(Filesys, InstallReplacesAnObjectByTheWholeCopy) {
    fs::create_symlink("src", "link");
    makeTrees({"tree/deep"});
    for (const std::size_t size : {0, 4096, 20001}) {
        write("src", std::string(size, 'x') + "end");
        for (const char* place : {"link", "tree"}) {
            EXPECT_EQ(0, tr_install_file("src", place, 0440));
            EXPECT_EQ(read("src"), read(place)) << place << " " << size;
        }
    }
    EXPECT_EQ(0, exitOf([] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  return limit(RLIMIT_FSIZE, 5000) && tr_install_file("src", "link", 0644) == -1;
              }));
    EXPECT_EQ("100440 100440", modes({"link", "tree"}));
    EXPECT_EQ(20004U, read("link").size()) << "the old file stays";
    EXPECT_EQ(3, std::distance(fs::directory_iterator("."), {})) << "and no half one beside it";
}

TEST_F(Filesys, MarkFilesAndKernelParameters) {
    EXPECT_EQ(0, tr_newmark_file("mark", "a longer text", 0600));
    EXPECT_EQ(0, tr_newmark_file("mark", "12\n", 0644));
    EXPECT_EQ("12\n 100600", read("mark") + " " + modes({"mark"}));
    char buffer[8] = "unused";
    std::size_t size = 2;
    EXPECT_EQ(0, tr_sysctl_readwrite("/proc/sys/kernel/ostype", buffer, &size, nullptr, 0));
    EXPECT_STREQ("Liused", buffer);
    size = sizeof buffer;
    EXPECT_EQ(0, tr_sysctl_readwrite("mark", buffer, &size, "345\n", 4));
    EXPECT_EQ("12\n 345\n", std::string(buffer, size) + " " + read("mark"));
    EXPECT_EQ(0, tr_newmark_file("mark", nullptr, 0644));
    EXPECT_EQ("", read("mark"));
}

} // namespace
