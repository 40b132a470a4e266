// Other processes act in the middle of a call: here just before the library calls a certain C function.
#include <sys/syscall.h>

#include <map>

#include "SupportFixture.h"

namespace {

// By the name of the C function: what others do just before the next call of it.
std::map<std::string, std::function<void()>> s_before;

void reach(const char* function) {
    if (const auto found = s_before.extract(function))
        found.mapped()();
}

} // namespace

// These replace the functions of the C library.
extern "C" int unlinkat(int directory, const char* path, int flags) noexcept {
    reach("unlinkat");
    return static_cast<int>(::syscall(SYS_unlinkat, directory, path, flags));
}

extern "C" int renameat(int from, const char* oldPath, int to, const char* newPath) noexcept {
    reach("renameat");
    return ::renameat2(from, oldPath, to, newPath, 0);
}

namespace {

class Race : public SupportTest {};

TEST_F(Race, RemovingTogetherIsNoFailure) {
    makeTrees({"tree/a"});
    write("tree/file", "");
    s_before["unlinkat"] = [] { fs::remove_all("tree"); };
    EXPECT_EQ("inf(trcfg_utils_filesys tr_rmdir) storage path(full_name=tree) have been removed\n",
              logOf([] { EXPECT_EQ(0, tr_rmdir("tree", 1)); }));
}

TEST_F(Race, RemovalStaysInItsTree) {
    makeTrees({"moved/a/b", "replaced/a", "beside"});
    for (const char* name : {"moved/a/b/file", "replaced/file", "beside/file"})
        write(name, "");
    const std::string log = logOf([] {
        s_before["unlinkat"] = [] { fs::rename("moved/a/b", "beside/b"); };
        EXPECT_EQ(-1, tr_rmdir("moved", 1));
        s_before["unlinkat"] = [] {
            fs::remove("replaced/a");
            fs::create_symlink("../beside", "replaced/a");
        };
        EXPECT_EQ(-1, tr_rmdir("replaced", 1));
    });
    EXPECT_EQ("err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=moved/a/b) failed(ret=13)\n"
              "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=replaced/a) failed(ret=101)\n"
              "err(trcfg_utils_filesys tr_rmdir) remove storage path(full_name=replaced) failed(ret=101)\n",
              log);
    EXPECT_EQ("40755 100644 40755", modes({"moved/a", "beside/file", "beside/b"}));
}

TEST_F(Race, InstalledFileIsAlwaysWhole) {
    write("dst", "old");
    write("src", "new");
    std::string found;
    s_before["renameat"] = [&] { found = read("dst"); };
    EXPECT_EQ(0, tr_install_file("src", "dst", 0644));
    EXPECT_EQ("old new", found + " " + read("dst"));
}

} // namespace
