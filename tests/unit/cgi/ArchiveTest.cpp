#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "TestFiles.h"
#include "cgi/archive/EntryNames.h"
#include "common/Utf8.h"
#include "fileman/disk/StorageRoot.h"

namespace {

namespace fs = std::filesystem;
using Kind = EntryNames::Kind;

TEST(Utf8, CharactersAndWhatOnlyLooksLikeOne) {
    const std::pair<const char*, std::size_t> cases[] = {{"", 0},
                                                         {"a", 1},
                                                         {"\x7f", 1},
                                                         {"\x80", 0},
                                                         {"\xc1\xbf", 0},
                                                         {"\xc2\x80", 2},
                                                         {"\xc3", 0},
                                                         {"\xc3(", 0},
                                                         {"\xe0\x9f\xbf", 0},
                                                         {"\xe0\xa0\x80", 3},
                                                         {"\xed\x9f\xbf", 3},
                                                         {"\xed\xa0\x80", 0},
                                                         {"\xef\xbf\xbf!", 3},
                                                         {"\xf0\x8f\xbf\xbf", 0},
                                                         {"\xf0\x90\x80\x80", 4},
                                                         {"\xf4\x8f\xbf\xbf", 4},
                                                         {"\xf4\x90\x80\x80", 0},
                                                         {"\xf5\x80\x80\x80", 0}};
    for (const auto& [text, length] : cases)
        EXPECT_EQ(length, utf8Length(text)) << text;
}

TEST(EntryNames, EveryReaderCanTakeThem) {
    const std::pair<std::string, std::string> cases[] = {
        {"a 'b' $(c)\"*?.html", "a 'b' $(c)\"*?.html"},
        {"\xc3\xa4\xe2\x82\xac.png", "\xc3\xa4\xe2\x82\xac.png"},
        {"\xe4.png", "%E4.png"},
        {"..\\..\\x", "..%5C..%5Cx"},
        {"C:x\n\x7f", "C%3Ax%0A%7F"},
        {"..", "%2E%2E"},
        {"...", "..."},
        {"50%", "50%"},
        {"%zz%4", "%zz%4"},
        {"%41%\xff", "%2541%%FF"},
        {"/home/a/../\xff/.", "/home/a/%2E%2E/%FF/%2E"}};
    for (const auto& [name, plain] : cases)
        EXPECT_EQ(plain, plainName(name));
}

TEST(EntryNames, NoTwoAreAlikeAndNoneIsTooLong) {
    EntryNames names;
    EXPECT_EQ("[a]-[b", names.take("", "[a]-[b", Kind::Directory));
    EXPECT_EQ("[a]-[b (2)", names.take("", "[a]-[b", Kind::Directory));
    EXPECT_EQ("[a]-[b (2) (2)", names.take("", "[a]-[b (2)", Kind::Directory));
    EXPECT_EQ("[a]-[b (3)", names.take("", "[a]-[b", Kind::Directory));
    EXPECT_EQ("[m]-[x/y]", names.take("", "[m]-[x/y]", Kind::Directory));
    EXPECT_EQ("[m]-[x/y] (2)", names.take("", "[m]-[x//y]", Kind::Directory));
    EXPECT_EQ("[l/%2E%2E/%2E%2E/etc]", names.take("", "[l/../../etc]", Kind::Directory));
    EXPECT_EQ("d/f.x (y).html", names.take("d", "f.x (y).html", Kind::File));

    const std::string bytes(254, '\xff');
    EXPECT_EQ("d/" + std::string(250, 'n') + ".html",
              names.take("d", std::string(300, 'n') + ".html", Kind::File));
    EXPECT_EQ("d/" + std::string(246, 'n') + " (2).html",
              names.take("d", std::string(260, 'n') + ".html", Kind::File));
    EXPECT_EQ(std::size_t{255}, names.take("", bytes, Kind::Directory).size());
    EXPECT_EQ("%FF (2)", names.take("", bytes + "x", Kind::Directory).substr(246));
}

class Root : public FilesTest {
protected:
    Root() {
        writeFile(at("home/a/b/file"), "inside");
        writeFile(at("other/file"), "outside");
    }

    // The content, or why there is none.
    std::string read(const std::string& path) const {
        const UniqueFd file = StorageRoot(at("home")).open(path, O_RDONLY);
        if (!file)
            return std::strerror(errno);
        std::string text(100, ' ');
        const ssize_t size = ::read(file.get(), text.data(), text.size());
        return size < 0 ? std::strerror(errno) : text.substr(0, static_cast<std::size_t>(size));
    }
    std::string readLink(const std::string& target) const {
        const std::string link = at("home/a/link");
        fs::remove(link);
        fs::create_symlink(target, link);
        return read(link);
    }
};

TEST_F(Root, LinksLeadToPlacesBelowItAndNowhereElse) {
    fs::create_directory_symlink("b", at("home/a/way"));
    fs::create_directory_symlink("..", at("home/a/b/back"));
    const std::string home = at("home");
    const std::string inside[] = {"b/file",
                                  "./b/.//file",
                                  "way/file",
                                  "b/back/way/back/b/file",
                                  home + "/a/b/file",
                                  "../a/b/file",
                                  "../../home/a/b/file",
                                  home + "/../home/a/b/file"};
    for (const std::string& target : inside)
        EXPECT_EQ("inside", readLink(target)) << target;
    const std::string outside[] = {at("other/file"),
                                   "../../other/file",
                                   "/etc/passwd",
                                   "../../../../../../../..",
                                   home + "/../other/../home/a/b/file",
                                   home + "2/file"};
    for (const std::string& target : outside)
        EXPECT_EQ(std::strerror(EXDEV), readLink(target)) << target;
    EXPECT_EQ(std::strerror(ELOOP), readLink("link"));
    EXPECT_EQ(std::strerror(ENOENT), readLink("nothing"));
    EXPECT_EQ(std::strerror(ENOTDIR), readLink("b/file/x"));
    EXPECT_EQ(std::strerror(EISDIR), readLink(".."));
    EXPECT_EQ(std::strerror(EXDEV), read(at("other/file")));
    EXPECT_EQ(std::strerror(EISDIR), read(home));
}

} // namespace
