#include <tuple>

#include "SupportFixture.h"

namespace {

class Filesys : public SupportTest {
protected:
    void makeTree(const std::string& directories) const {
        std::filesystem::create_directories(at(directories));
    }
};

TEST_F(Filesys, DirectoriesAreMadeFromTheTop) {
    write("file", "in the way");
    makeTree("real");
    link("real", "link");
    link("nowhere", "dangling");
    const Lines lines = logOf([&] {
        EXPECT_EQ(0, tr_mkdir(at("a/b//c/").c_str(), 0750));
        for (const char* name : {"a/b", "link/y", "dangling", "new/../other"}) // the first one exists
            EXPECT_EQ(0, tr_mkdir(at(name).c_str(), 0755));
        EXPECT_EQ(0, tr_mkdir_parent(at("file/x").c_str(), 0755));
    });
    EXPECT_EQ(8U, lines.size()) << "a line for each directory made";
    EXPECT_EQ("inf(trcfg_utils_filesys tr_mkdir_parent) directory a have been made", lines.at(0));
    EXPECT_EQ("d750 d755 l d755",
              kind("a/b/c") + " " + kind("file") + " " + kind("link") + " " + kind("real/y"));
}

TEST_F(Filesys, RootDirectoryStays) {
    if (!canHaveOwnRoot())
        GTEST_SKIP() << "needs a root directory of its own: root rights or user namespaces";
    makeTree("dir/sub");
    write("dir/file", "stays");
    link("/", "root");
    const Lines lines = logOf([&] {
        EXPECT_EQ(0, exitInOwnRoot([] {
                      bool kept = true;
                      for (const char* name : {"/", "//", "/..", "dir/..", "root/."})
                          kept = kept && tr_rmdir(name, 1) == -1 && tr_mkfifo(name, 0600) == -1 &&
                                 tr_mksymlink("x", name) == -1 &&
                                 tr_install_file("dir/file", name, 0600) == -1;
                      for (const char* name : {"/", "//name", "name", "."})
                          kept = kept && tr_mkdir_parent(name, 0755) == 0;
                      return kept && tr_mkdir("//", 0755) == 0 && tr_rmdir("root//", 1) == 0;
                  }));
    });
    EXPECT_EQ(5 * 4 + 1U, lines.size());
    EXPECT_EQ("err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=//) failed(ret=2)",
              lines.at(4));
    EXPECT_EQ("d755 stays none", kind("dir/sub") + " " + read("dir/file") + " " + kind("root"));
}

TEST_F(Filesys, FailuresNameTheStepAndRemoveNothing) {
    makeTree("dir/x");
    write("dir/src", "source");
    write("dst", "old");
    write("empty", "");
    ::mkfifo(at("fifo").c_str(), 0600);
    link("dir/src", "alias");
    const std::string none = "/proc/none";
    std::string tooLong;
    while (tooLong.size() < 30000)
        tooLong += "x/";
    char buffer[8];
    const auto sysctl = [&](const char* path, std::size_t size) {
        return tr_sysctl_readwrite(path, buffer, &size, "junk", 4);
    };
    // clang-format off
    const std::vector<std::tuple<std::string, std::function<int()>, std::string>> rows = { // end of the last line
        {"tr_mkdir", [&] { return tr_mkdir(nullptr, 0755); }, "build directory((null)) failed!(ret=1)"},
        {"tr_mkdir", [&] { return tr_mkdir((none + "/a/b").c_str(), 0755); }, "build directory(/proc/none/a/b) failed!(ret=11)"},
        {"tr_mkdir", [&] { return tr_mkdir(tooLong.c_str(), 0755); }, tooLong.substr(0, 255 - std::string("build directory(").size())},
        {"tr_mkdir_parent", [&] { return tr_mkdir_parent("", 0755); }, "build parent directory of path() failed!(ret=1)"},
        {"tr_mkdir_parent", [&] { return tr_mkdir_parent((none + "/a").c_str(), 0755); }, "build parent directory of path(/proc/none/a) failed!(ret=21)"},
        {"tr_mkdir_parent", [&] { return tr_mkdir_parent((none + "/a/b").c_str(), 0755); }, "build parent directory of path(/proc/none/a/b) failed!(ret=11)"},
        {"tr_rmdir", [&] { return tr_rmdir(nullptr, 1); }, "remove storage path(full_name=(null)) failed(ret=1)"},
        {"tr_rmdir", [&] { return tr_rmdir(at("dir/.").c_str(), 1); }, "remove storage path(full_name=dir/.) failed(ret=2)"},
        {"tr_rmdir", [&] { return tr_rmdir(at("dir/x/..").c_str(), 1); }, "remove storage path(full_name=dir/x/..) failed(ret=2)"},
        {"tr_rmdir", [&] { return tr_rmdir(at("dst").c_str(), 0); }, "remove storage path(full_name=dst) failed(ret=11)"},
        {"tr_mkfifo", [&] { return tr_mkfifo(at("dir/").c_str(), 0600); }, "build fifo device(dir/) failed!(ret=1)"},
        {"tr_mkfifo", [&] { return tr_mkfifo(none.c_str(), 0600); }, "build fifo device(/proc/none) failed!(ret=21)"},
        {"tr_mksymlink", [&] { return tr_mksymlink(nullptr, at("dst").c_str()); }, "build symbol link (dst) failed!(ret=1)"},
        {"tr_mksymlink", [&] { return tr_mksymlink("x", none.c_str()); }, "build symbol link (/proc/none) failed!(ret=21)"},
        {"tr_install_file", [&] { return tr_install_file(nullptr, at("dst").c_str(), 0644); }, "file \"(null)\" --> \"dst\" install failed!(ret=1)"},
        {"tr_install_file", [&] { return tr_install_file(at("dir/src").c_str(), at("dir/").c_str(), 0644); }, "--> \"dir/\" install failed!(ret=1)"},
        {"tr_install_file", [&] { return tr_install_file(at("none").c_str(), at("dst").c_str(), 0644); }, "install failed!(ret=12)"},
        {"tr_install_file", [&] { return tr_install_file(at("dir").c_str(), at("dst").c_str(), 0644); }, "install failed!(ret=12)"},
        {"tr_install_file", [&] { return tr_install_file(at("fifo").c_str(), at("dst").c_str(), 0644); }, "install failed!(ret=12)"},
        {"tr_install_file", [&] { return tr_install_file(at("dir/src").c_str(), at("dir/src").c_str(), 0644); }, "install failed!(ret=3)"},
        {"tr_install_file", [&] { return tr_install_file(at("alias").c_str(), at("dir/src").c_str(), 0644); }, "install failed!(ret=3)"},
        {"tr_install_file", [&] { return tr_install_file(at("dir/src").c_str(), at("dir").c_str(), 0644); }, "install failed!(ret=3)"},
        {"tr_install_file", [&] { return tr_install_file(at("dir/src").c_str(), none.c_str(), 0644); }, "install failed!(ret=13)"},
        {"tr_newmark_file", [&] { return tr_newmark_file(at("dir").c_str(), "text", 0644); }, "build mark file(dir) failed!(ret=11)"},
        {"tr_newmark_file", [&] { return tr_newmark_file(at("none/mark").c_str(), "text", 0644); }, "failed!(ret=11)"},
        {"tr_newmark_file", [&] { return tr_newmark_file(at("fifo").c_str(), "text", 0644); }, "failed!(ret=11)"},
        {"tr_sysctl_readwrite", [&] { return sysctl(at("none").c_str(), sizeof buffer); }, "access kernel parameter(none) failed!(ret=11)"},
        {"tr_sysctl_readwrite", [&] { return sysctl(at("empty").c_str(), sizeof buffer); }, "failed!(ret=12)"},
        {"tr_sysctl_readwrite", [&] { return sysctl(at("none").c_str(), 0); }, "failed!(ret=21)"},
        {"tr_sysctl_readwrite", [&] { return sysctl("/proc/self/oom_score_adj", 0); }, "failed!(ret=22)"},
    };
    // clang-format on
    for (const auto& [operation, call, end] : rows) {
        const Lines lines = logOf([&, call = call] { EXPECT_EQ(-1, call()); });
        const std::string line = lines.empty() ? "" : lines.back();
        EXPECT_EQ(0U, line.find("err(trcfg_utils_filesys " + operation + ") ")) << line;
        EXPECT_EQ(end, line.substr(line.size() - std::min(line.size(), end.size())));
        EXPECT_EQ("old source", read("dst") + " " + read("dir/src")) << line;
    }
}

TEST_F(Filesys, RemovalWithoutForceKeepsFiles) {
    makeTree("tree/empty/deep");
    makeTree("tree/full");
    makeTree("hollow/a/b");
    write("tree/full/file", "");
    const Lines lines = logOf([&] {
        EXPECT_EQ(-1, tr_rmdir(at("tree").c_str(), 0));
        EXPECT_EQ(0, tr_rmdir(at("hollow").c_str(), 0));
        EXPECT_EQ(0, tr_rmdir(at("nothing").c_str(), 0));
    });
    const std::string kept = "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree";
    EXPECT_EQ((Lines{kept + "/full/file) failed(ret=11)", kept + "/full) failed(ret=101)",
                     kept + ") failed(ret=101)",
                     "inf(trcfg_utils_filesys tr_rmdir) storage path(full_name=hollow) have been removed"}),
              lines);
    EXPECT_EQ("none none", kind("tree/empty") + " " + kind("hollow"));
}

TEST_F(Filesys, RemovalNeverFollowsLinks) {
    makeTree("outside");
    makeTree("tree/sub");
    write("outside/file", "stays");
    link("../../outside", "tree/sub/link");
    link("outside", "link");
    ::mkfifo(at("tree/fifo").c_str(), 0600);
    write("tree/ -rf %s\n'", "");
    EXPECT_EQ(0, tr_rmdir(at("tree//").c_str(), 1));
    EXPECT_EQ(0, tr_rmdir(at("link/").c_str(), 1));
    EXPECT_EQ("none none stays", kind("tree") + " " + kind("link") + " " + read("outside/file"));
}

TEST_F(Filesys, RemovalIsNotLimitedByDescriptorsOrPathLength) {
    EXPECT_EQ(0, exitOf([&] {
                  const std::string name(200, 'd');
                  bool made = ::mkdir(at("deep").c_str(), 0755) == 0 && ::chdir(at("deep").c_str()) == 0;
                  for (int level = 0; level < 100 && made; ++level)
                      made = ::mkdir("side", 0755) == 0 && ::mkdir(name.c_str(), 0755) == 0 &&
                             ::chdir(name.c_str()) == 0;
                  limit(RLIMIT_NOFILE, 16);
                  return made && tr_rmdir(at("deep").c_str(), 1) == 0;
              }));
    EXPECT_EQ("none", kind("deep"));
}

TEST_F(Filesys, RemovalStopsWhereItIsUnsafeToContinue) {
    makeTree("tree/a/b");
    makeTree("beside");
    write("tree/a/b/file", "");
    write("beside/file", "");
    const std::string kept = "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree";
    const Lines moved = logOf([&] {
        trcfg_open(1, "test");
        g_atNextSystemLog = [&] { // the line about the file
            trcfg_close();
            std::filesystem::rename(at("tree/a/b"), at("beside/b"));
        };
        EXPECT_EQ(-1, tr_rmdir(at("tree").c_str(), 0));
    });
    EXPECT_EQ(Lines{kept + "/a/b) failed(ret=13)"}, moved);
    EXPECT_EQ("d755 -644 -644", kind("tree/a") + " " + kind("beside/file") + " " + kind("beside/b/file"));

    write("tree/file", "");
    makeTree("tree/b");
    const Lines starved = logOf([&] {
        EXPECT_EQ(0, exitOf([&] {
                      const int next = ::open("/dev/null", O_RDONLY);
                      return limit(RLIMIT_NOFILE, static_cast<rlim_t>(next) + 3) &&
                             tr_rmdir(at("tree").c_str(), 1) == -1;
                  }));
    });
    EXPECT_EQ(1U, starved.size());
    EXPECT_EQ("none", kind("tree/file"));
    EXPECT_EQ("d755 d755", kind("tree/a") + " " + kind("tree/b"));
}

TEST_F(Filesys, RemovalContinuesAfterAFailure) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs a second user";
    makeTree("tree/a/locked");
    makeTree("tree/z/free");
    write("tree/a/locked/file", "");
    for (const char* name : {"tree", "tree/a", "tree/z", "tree/a/locked"})
        ASSERT_EQ(0, ::chown(at(name).c_str(), 65534, 65534));
    ::chmod(at("tree/a/locked").c_str(), 0644); // readable, but its entries and ".." cannot be used
    const Lines lines = logOf(
        [&] { EXPECT_EQ(0, exitInOwnRoot([] { return becomeNobody() && tr_rmdir("tree", 1) == -1; })); });
    const std::string kept = "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=tree";
    EXPECT_EQ((Lines{kept + "/a/locked) failed(ret=101)", kept + "/a) failed(ret=101)",
                     kept + ") failed(ret=101)"}),
              lines);
    EXPECT_EQ("none", kind("tree/z"));
}

TEST_F(Filesys, MissingParentsGetNoSearchPermission) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can fill such directories";
    write("src", "x");
    makeTree("p/q/fifo/tree"); // this object is in the way
    ::chmod(at("p/q").c_str(), 0700);
    EXPECT_EQ(0, tr_mkfifo(at("p/q/fifo").c_str(), 0600));
    EXPECT_EQ(0, tr_mksymlink("some target", at("s/link").c_str()));
    EXPECT_EQ(0, tr_install_file(at("src").c_str(), at("i/file").c_str(), 0640));
    EXPECT_EQ(0, exitInOwnRoot([] { return becomeNobody() && tr_mkfifo("user/q/fifo", 0600) == -1; }));
    EXPECT_EQ("d700 p600 d644 l d644 -640 d644", kind("p/q") + " " + kind("p/q/fifo") + " " + kind("s") +
                                                     " " + kind("s/link") + " " + kind("i") + " " +
                                                     kind("i/file") + " " + kind("user"));
}

TEST_F(Filesys, InstallCopiesEverySize) {
    link("src", "dst"); // the link is replaced; its target is not written
    for (const std::size_t size : {0, 1, 4095, 4096, 4097, 20000}) {
        std::string content(size, '\0');
        for (std::size_t index = 0; index < size; ++index)
            content[index] = static_cast<char>(index * 7);
        write("src", content);
        EXPECT_EQ(0, tr_install_file(at("src").c_str(), at("dst").c_str(), 0440));
        EXPECT_TRUE(content == read("dst") && content == read("src")) << size;
        EXPECT_EQ("-440", kind("dst"));
    }
    EXPECT_EQ(0, exitOf([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  limit(RLIMIT_FSIZE, 5000);
                  return tr_install_file(at("src").c_str(), at("dst").c_str(), 0644) == -1;
              }));
    EXPECT_EQ("20000 -440", std::to_string(read("dst").size()) + " " + kind("dst")) << "the old file stays";
    EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(m_dir), {}))
        << "and no half one beside it";
}

TEST_F(Filesys, MarkFilesAndKernelParameters) {
    EXPECT_EQ(0, tr_newmark_file(at("mark").c_str(), "a longer text", 0600));
    EXPECT_EQ(0, tr_newmark_file(at("mark").c_str(), "12\n", 0644));
    EXPECT_EQ("12\n -600", read("mark") + " " + kind("mark"));
    char buffer[8] = "unused";
    std::size_t size = 2;
    EXPECT_EQ(0, tr_sysctl_readwrite("/proc/sys/kernel/ostype", buffer, &size, nullptr, 0));
    EXPECT_STREQ("Liused", buffer);
    size = sizeof buffer;
    EXPECT_EQ(0, tr_sysctl_readwrite(at("mark").c_str(), buffer, &size, "345\n", 4));
    EXPECT_EQ("12\n 345\n", std::string(buffer, size) + " " + read("mark"));
    EXPECT_EQ(0, tr_sysctl_readwrite(at("none").c_str(), nullptr, &size, "x", 0)) << "neither read nor write";
    EXPECT_EQ(0, tr_newmark_file(at("mark").c_str(), nullptr, 0644));
    EXPECT_EQ("", read("mark"));
}

} // namespace
