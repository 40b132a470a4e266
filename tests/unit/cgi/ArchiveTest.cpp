#include <fcntl.h>

#include <cerrno>

#include "TestFiles.h"
#include "cgi/archive/EntryNames.h"
#include "fileman/disk/StorageLinks.h"

namespace {

namespace fs = std::filesystem;
using Kind = EntryNames::Kind;

TEST(EntryNames, EveryReaderCanTakeThem) {
    const std::pair<std::string, std::string> rows[] = {
        {"a 'b' $(c)\"*?.html", "a 'b' $(c)\"*?.html"},
        {"\xc3\xa4\xe2\x82\xac.png", "\xc3\xa4\xe2\x82\xac.png"},
        {"\xe4.png", "%E4.png"},
        {"..\\..\\x", "..%5C..%5Cx"},
        {"C:x\n\x7f", "C%3Ax%0A%7F"},
        {"...", "..."},
        {"%zz%4", "%zz%4"},
        {"%41%\xff", "%2541%%FF"},
        {"/home/a/../\xff/.", "/home/a/%2E%2E/%FF/%2E"}};
    for (const auto& [name, plain] : rows)
        EXPECT_EQ(plain, plainName(name));
}

TEST(EntryNames, NoTwoAreAlikeAndNoneIsTooLong) {
    const std::string bytes(254, '\xff');
    const std::tuple<Kind, std::string, std::string> rows[] = {
        {Kind::Directory, "[a]-[b", "[a]-[b"},
        {Kind::Directory, "[a]-[b", "[a]-[b (2)"},
        {Kind::Directory, "[a]-[b (2)", "[a]-[b (2) (2)"},
        {Kind::Directory, "[a]-[b", "[a]-[b (3)"},
        {Kind::Directory, "[m]-[x/y]", "[m]-[x/y]"},
        {Kind::Directory, "[m]-[x//y]", "[m]-[x/y] (2)"},
        {Kind::Directory, "[l/../../etc]", "[l/%2E%2E/%2E%2E/etc]"},
        {Kind::File, "f.x (y).html", "f.x (y).html"},
        {Kind::File, std::string(300, 'n') + ".html", std::string(250, 'n') + ".html"},
        {Kind::File, std::string(260, 'n') + ".html", std::string(246, 'n') + " (2).html"}};
    EntryNames names;
    for (const auto& [kind, name, taken] : rows)
        EXPECT_EQ("d/" + taken, names.take("d", name, kind));
    EXPECT_EQ(255u, names.take("", bytes, Kind::Directory).size());
    EXPECT_EQ("%FF (2)", names.take("", bytes + "x", Kind::Directory).substr(246));
}

TEST_F(FilesTest, LinksLeadToPlacesBelowTheRootAndNowhereElse) {
    const std::string home = at("home"), link = at("home/a/link");
    writeFile(at("home/a/b/file"), "inside");
    writeFile(at("other/file"), "outside");
    fs::create_directory_symlink("b", at("home/a/way"));
    fs::create_directory_symlink("..", at("home/a/b/back"));
    // 0 for a file that is open, or why it is not.
    const auto open = [&](const std::string& path) {
        return StorageLinks(home).open(path, O_RDWR) ? 0 : errno;
    };
    const auto follow = [&](const std::string& target) {
        fs::remove(link);
        fs::create_symlink(target, link);
        return open(link);
    };
    for (const std::string& target :
         Names{"b/file", "./b/.//file", "way/file", "b/back/way/back/b/file", "../a/b/file",
               home + "/a/b/file", "../../home/a/b/file", home + "/../home/a/b/file"})
        EXPECT_EQ(0, follow(target)) << target;
    for (const std::string& target : Names{at("other/file"), "../../other/file", "../../../../../../../..",
                                           home + "/../other/../home/a/b/file", home + "2/file"})
        EXPECT_EQ(EXDEV, follow(target)) << target;
    EXPECT_EQ(ELOOP, follow("link"));
    EXPECT_EQ(ENOENT, follow("nothing"));
    EXPECT_EQ(ENOTDIR, follow("b/file/x"));
    EXPECT_EQ(EISDIR, follow(".."));
    EXPECT_EQ(EXDEV, open(at("other/file")));
    EXPECT_EQ(EISDIR, open(home));
}

} // namespace
