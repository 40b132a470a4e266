#include <algorithm>

#include "SupportFixture.h"

namespace {

class Filesys : public SupportTest {};

// Some rules can only be tried with a root directory or a second user of one's own.
class FilesysAsRoot : public SupportTest {
protected:
    void SetUp() override {
        if (::geteuid() != 0)
            GTEST_SKIP() << "needs root rights";
    }
};

TEST_F(Filesys, DirectoriesAreMadeFromTheTop) {
    makeTrees({"real"});
    write("file", "in the way");
    link("real", "link");
    link("nowhere", "dangling");
    const std::string log = logOf([] {
        EXPECT_EQ(0, tr_mkdir("a/b//c/", 0750));
        for (const char* name : {"a/b", "link/y", "dangling", "new/../other"}) // the first one exists
            EXPECT_EQ(0, tr_mkdir(name, 0755));
        EXPECT_EQ(0, tr_mkdir_parent("file/x", 0755));
    });
    EXPECT_EQ(8, std::count(log.begin(), log.end(), '\n')) << "a line for each directory made\n" << log;
    EXPECT_EQ("40750 40755 120777 40755", modes({"a/b/c", "file", "link", "real/y"}));
}

TEST_F(FilesysAsRoot, RootDirectoryStays) {
    makeTrees({"dir"});
    write("src", "stays");
    link("/", "root");
    const std::string log = logOf([] {
        EXPECT_EQ(0, exitInOwnRoot([] {
                      bool kept = true;
                      for (const char* name : {"/", "//", "/..", "dir/..", "root/."})
                          kept = kept && tr_rmdir(name, 1) == -1 && tr_mkfifo(name, 0600) == -1 &&
                                 tr_mksymlink("x", name) == -1 && tr_install_file("src", name, 0600) == -1;
                      for (const char* name : {"/", "//name", "name", "."})
                          kept = kept && tr_mkdir_parent(name, 0755) == 0;
                      return kept && tr_mkdir("//", 0755) == 0 && tr_rmdir("root//", 1) == 0;
                  }));
    });
    EXPECT_NE(std::string::npos, log.find("tr_rmdir) remove storage path(full_name=//) failed(ret=2)"))
        << log;
    EXPECT_NE(std::string::npos, log.find("tr_mkfifo) build fifo device(dir/..) failed!(ret=1)")) << log;
    EXPECT_EQ("40755 100644 0", modes({"dir", "src", "root"}));
}

int readParameter(const char* path) {
    char buffer[8];
    std::size_t size = sizeof buffer;
    return tr_sysctl_readwrite(path, buffer, &size, nullptr, 0);
}

int writeParameter(const char* path) {
    return tr_sysctl_readwrite(path, nullptr, nullptr, "text", 4);
}

TEST_F(Filesys, FailuresNameTheStepAndRemoveNothing) {
    makeTrees({"dir"});
    write("dir/src", "source");
    write("dst", "old");
    write("empty", "");
    ::mkfifo("fifo", 0600);
    link("dir/src", "alias");
    std::string tooLong;
    while (tooLong.size() < 30000)
        tooLong += "x/";
    const struct {
        std::function<int()> call;
        std::string line; // without the function name
    } rows[] = {
        {[] { return tr_mkdir(nullptr, 0755); }, "build directory((null)) failed!(ret=1)"},
        {[] { return tr_mkdir("/proc/a/b", 0755); }, "build directory(/proc/a/b) failed!(ret=11)"},
        {[&] { return tr_mkdir(tooLong.c_str(), 0755); }, "build directory(" + tooLong.substr(0, 239)},
        {[] { return tr_mkdir_parent("", 0755); }, "build parent directory of path() failed!(ret=1)"},
        {[] { return tr_rmdir(nullptr, 1); }, "remove storage path(full_name=(null)) failed(ret=1)"},
        {[] { return tr_rmdir("dst", 0); }, "remove storage path(full_name=dst) failed(ret=11)"},
        {[] { return tr_mkfifo("/proc/no", 0600); }, "build fifo device(/proc/no) failed!(ret=21)"},
        {[] { return tr_mksymlink(nullptr, "dst"); }, "build symbol link (dst) failed!(ret=1)"},
        {[] { return tr_mksymlink("x", "/proc/no"); }, "build symbol link (/proc/no) failed!(ret=21)"},
        {[] { return tr_install_file(nullptr, "dst", 0644); },
         "\"(null)\" --> \"dst\" install failed!(ret=1)"},
        {[] { return tr_install_file("fifo", "dst", 0644); }, "--> \"dst\" install failed!(ret=12)"},
        {[] { return tr_install_file("alias", "dir/src", 0644); }, "--> \"dir/src\" install failed!(ret=3)"},
        {[] { return tr_install_file("dir/src", "dir", 0644); }, "--> \"dir\" install failed!(ret=3)"},
        {[] { return tr_install_file("dst", "/proc/no", 0644); }, "--> \"/proc/no\" install failed!(ret=13)"},
        {[] { return tr_newmark_file("no/mark", "x", 0644); }, "build mark file(no/mark) failed!(ret=11)"},
        {[] { return tr_newmark_file("fifo", "x", 0644); }, "build mark file(fifo) failed!(ret=11)"},
        {[] { return readParameter("no"); }, "access kernel parameter(no) failed!(ret=11)"},
        {[] { return readParameter("empty"); }, "access kernel parameter(empty) failed!(ret=12)"},
        {[] { return writeParameter("no"); }, "access kernel parameter(no) failed!(ret=21)"},
        {[] { return writeParameter("/dev/full"); }, "access kernel parameter(/dev/full) failed!(ret=22)"},
    };
    for (const auto& row : rows) {
        const std::string log = logOf([&] { EXPECT_EQ(-1, row.call()) << row.line; });
        EXPECT_NE(std::string::npos, log.find(row.line + "\n")) << row.line << " not in " << log;
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
    link("../../outside", "tree/sub/link");
    link("outside", "link");
    EXPECT_EQ(0, tr_rmdir("tree//", 1));
    EXPECT_EQ(0, tr_rmdir("link/", 1));
    EXPECT_EQ("0 0 40755", modes({"tree", "link", "outside/inner"}));
}

TEST_F(Filesys, RemovalNeedsFewDescriptorsAndNoShortPaths) {
    const auto removeWith = [](rlim_t more) {
        const int next = ::open("/dev/null", O_RDONLY);
        return limit(RLIMIT_NOFILE, static_cast<rlim_t>(next) + more) && tr_rmdir("deep", 1) == 0;
    };
    EXPECT_EQ(0, exitOf([] {
                  const std::string name(200, 'd');
                  bool made = ::mkdir("deep", 0755) == 0;
                  for (int level = 0; level < 100 && made; ++level)
                      made = ::chdir(level == 0 ? "deep" : name.c_str()) == 0 && ::mkdir("side", 0755) == 0 &&
                             ::mkdir(name.c_str(), 0755) == 0;
                  return made;
              }));
    EXPECT_NE(0, exitOf([&] { return removeWith(3); }));
    EXPECT_EQ("40755", modes({"deep/side"})) << "it stops without descriptors";
    EXPECT_EQ(0, exitOf([&] { return removeWith(8); }));
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
    link("src", "link");
    makeTrees({"tree/deep"});
    for (const std::size_t size : {0, 1, 4095, 4096, 4097, 20000}) {
        std::string content(size, '\0');
        for (std::size_t index = 0; index < size; ++index)
            content[index] = static_cast<char>(index * 7);
        write("src", content);
        for (const char* place : {"link", "tree"}) {
            EXPECT_EQ(0, tr_install_file("src", place, 0440));
            EXPECT_TRUE(content == read(place) && content == read("src")) << place << " " << size;
        }
    }
    EXPECT_EQ(0, exitOf([] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  return limit(RLIMIT_FSIZE, 5000) && tr_install_file("src", "link", 0644) == -1;
              }));
    EXPECT_EQ("100440 100440", modes({"link", "tree"}));
    EXPECT_EQ(20000U, read("link").size()) << "the old file stays";
    EXPECT_EQ(3, std::distance(std::filesystem::directory_iterator("."), {})) << "and no half one beside it";
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
    EXPECT_EQ(0, tr_sysctl_readwrite("none", nullptr, &size, "x", 0)) << "neither read nor write";
    EXPECT_EQ(0, tr_newmark_file("mark", nullptr, 0644));
    EXPECT_EQ("", read("mark"));
}

} // namespace
