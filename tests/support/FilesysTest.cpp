#include <array>
#include <map>

#include "SupportFixture.h"

namespace {

class Filesys : public SupportTest {
protected:
    // Each operation as one call on two arguments, so that a table can hold it.
    // clang-format off
    static int run(const std::string& operation, const char* path, const std::string& other) {
        static const std::map<std::string, int (*)(const char*, const std::string&)> operations = {
            {"tr_mkdir", [](auto* first, auto&) { return tr_mkdir(first, 0755); }},
            {"tr_mkdir_parent", [](auto* first, auto&) { return tr_mkdir_parent(first, 0755); }},
            {"tr_rmdir", [](auto* first, auto& second) { return tr_rmdir(first, second == "force"); }},
            {"tr_mkfifo", [](auto* first, auto&) { return tr_mkfifo(first, 0600); }},
            {"tr_mksymlink", [](auto* first, auto& second) { return tr_mksymlink(first, second.c_str()); }},
            {"tr_install_file", [](auto* first, auto& second) { return tr_install_file(first, second.c_str(), 0644); }},
            {"tr_newmark_file", [](auto* first, auto&) { return tr_newmark_file(first, "text", 0644); }},
            {"tr_sysctl_readwrite", [](auto* first, auto& second) {
                char buffer[8];
                std::size_t size = second == "read" ? sizeof buffer : 0;
                return tr_sysctl_readwrite(first, buffer, &size, "junk", 4);
            }},
        };
        return operations.at(operation)(path, other);
    }
    // clang-format on

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
        for (const char* name : {"a/b", "link/y", "dangling", "new/../other"}) // the first is there
            EXPECT_EQ(0, tr_mkdir(at(name).c_str(), 0755));
        for (const std::string& name : {at("file/x"), std::string("name"), std::string("/name")})
            EXPECT_EQ(0, tr_mkdir_parent(name.c_str(), 0755));
    });
    EXPECT_EQ(8U, lines.size()) << "a line for each directory made";
    EXPECT_EQ("inf(trcfg_utils_filesys tr_mkdir_parent) directory a have been made", lines.at(0));
    EXPECT_EQ("d750 d755 l d755",
              kind("a/b/c") + " " + kind("file") + " " + kind("link") + " " + kind("real/y"));
}

TEST_F(Filesys, FailuresNameTheStepAndTakeNothingAway) {
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
    // Operation, path, second argument, end of the last line.
    // clang-format off
    const std::vector<std::array<std::string, 4>> rows = {
        {"tr_mkdir", "null", "", "build directory((null)) failed!(ret=1)"},
        {"tr_mkdir", none + "/a/b", "", "build directory(/proc/none/a/b) failed!(ret=11)"},
        {"tr_mkdir", tooLong, "", tooLong.substr(0, 255 - std::string("build directory(").size())},
        {"tr_mkdir_parent", "", "", "build parent directory of path() failed!(ret=1)"},
        {"tr_mkdir_parent", none + "/a", "", "build parent directory of path(/proc/none/a) failed!(ret=21)"},
        {"tr_mkdir_parent", none + "/a/b", "", "build parent directory of path(/proc/none/a/b) failed!(ret=11)"},
        {"tr_rmdir", "null", "force", "remove storage path(full_name=(null)) failed(ret=1)"},
        {"tr_rmdir", at("dir/."), "force", "remove storage path(full_name=dir/.) failed(ret=2)"},
        {"tr_rmdir", at("dir/x/.."), "force", "remove storage path(full_name=dir/x/..) failed(ret=2)"},
        {"tr_rmdir", "//", "force", "remove storage path(full_name=//) failed(ret=2)"},
        {"tr_rmdir", at("dst"), "", "remove storage path(full_name=dst) failed(ret=11)"},
        {"tr_mkfifo", at("dir/"), "", "build fifo device(dir/) failed!(ret=1)"},
        {"tr_mkfifo", none, "", "build fifo device(/proc/none) failed!(ret=21)"},
        {"tr_mksymlink", "null", at("dst"), "build symbol link (dst) failed!(ret=1)"},
        {"tr_mksymlink", "x", none, "build symbol link (/proc/none) failed!(ret=21)"},
        {"tr_install_file", "null", at("dst"), "file \"(null)\" --> \"dst\" install failed!(ret=1)"},
        {"tr_install_file", at("dir/src"), at("dir/"), "--> \"dir/\" install failed!(ret=1)"},
        {"tr_install_file", at("none"), at("dst"), "install failed!(ret=12)"},
        {"tr_install_file", at("dir"), at("dst"), "install failed!(ret=12)"},
        {"tr_install_file", at("fifo"), at("dst"), "install failed!(ret=12)"},
        {"tr_install_file", at("dir/src"), at("dir/src"), "install failed!(ret=3)"},
        {"tr_install_file", at("alias"), at("dir/src"), "install failed!(ret=3)"},
        {"tr_install_file", at("dir/src"), at("dir"), "install failed!(ret=3)"},
        {"tr_install_file", at("dir/src"), none, "install failed!(ret=13)"},
        {"tr_newmark_file", at("dir"), "", "build mark file(dir) failed!(ret=11)"},
        {"tr_newmark_file", at("none/mark"), "", "failed!(ret=11)"},
        {"tr_newmark_file", at("fifo"), "", "failed!(ret=11)"},
        {"tr_sysctl_readwrite", at("none"), "read", "access kernel parameter(none) failed!(ret=11)"},
        {"tr_sysctl_readwrite", at("empty"), "read", "failed!(ret=12)"},
        {"tr_sysctl_readwrite", at("none"), "", "failed!(ret=21)"},
        {"tr_sysctl_readwrite", "/proc/self/oom_score_adj", "", "failed!(ret=22)"},
    };
    // clang-format on
    for (const auto& [operation, path, other, end] : rows) {
        const Lines lines = logOf([&, operation = operation, path = path, other = other] {
            EXPECT_EQ(-1, run(operation, path == "null" ? nullptr : path.c_str(), other))
                << operation << " " << path;
        });
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

TEST_F(Filesys, RemovalIsNotBoundByDescriptorsOrPathLength) {
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

TEST_F(Filesys, WhatCannotBeRemovedDoesNotHoldUpTheRest) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs a second user";
    makeTree("tree/a/locked");
    makeTree("tree/z/free");
    write("tree/a/locked/file", "");
    for (const char* name : {"tree", "tree/a", "tree/z", "tree/a/locked"})
        ASSERT_EQ(0, ::chown(at(name).c_str(), 65534, 65534));
    ::chmod(at("tree/a/locked").c_str(), 0644); // may be read, but neither worked in nor left through ".."
    const Lines lines = logOf([&] {
        EXPECT_EQ(0, exitOf([&] { return becomeNobody() && tr_rmdir(at("tree").c_str(), 1) == -1; }));
    });
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
    makeTree("p/q/fifo/tree"); // in the way
    ::chmod(at("p/q").c_str(), 0700);
    EXPECT_EQ(0, tr_mkfifo(at("p/q/fifo").c_str(), 0600));
    EXPECT_EQ(0, tr_mksymlink("some target", at("s/link").c_str()));
    EXPECT_EQ(0, tr_install_file(at("src").c_str(), at("i/file").c_str(), 0640));
    EXPECT_EQ(0, exitOf([&] { return becomeNobody() && tr_mkfifo(at("user/q/fifo").c_str(), 0600) == -1; }));
    EXPECT_EQ("d700 p600 d644 l d644 -640 d644", kind("p/q") + " " + kind("p/q/fifo") + " " + kind("s") +
                                                     " " + kind("s/link") + " " + kind("i") + " " +
                                                     kind("i/file") + " " + kind("user"));
}

TEST_F(Filesys, InstallCopiesEverySize) {
    link("src", "dst"); // is replaced, not written through
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
    EXPECT_EQ("none", kind("dst")); // half a file is worse than none
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
    EXPECT_EQ(0, tr_newmark_file(at("mark").c_str(), nullptr, 0644));
    EXPECT_EQ("", read("mark"));
}

} // namespace
