#include "TestFiles.h"
#include "fileman/CFileManager.h"
#include "fileman/CResultItem.h"

namespace {

using Store = CFileManager;

TEST_F(FilesTest, PortsAndTypesOfDirectoryNames) {
    readSections("<port><e name='GE P1' label='Port 1' key='ge'/><e name='Short' key=''/></port>");
    const std::tuple<const char*, int, const char*> ports[] = {
        {"", -1, "Unknown"},      {"10gport2", -1, "10G P2"}, {"10gportx", 3, "10G P1"},
        {"geport2", -1, "GE P1"}, {"geXXXXX", -1, "GE P1"},   {"abc", -1, "Short"},
        {"ge", 0, "GE P1"},       {"ge", 3, "Short"},         {"10g", 0, ""}};
    for (const auto& [name, length, expected] : ports)
        EXPECT_EQ(expected, Store::str2Port(name, length)) << name;
    const std::tuple<const char*, int, const char*> types[] = {
        {"", -1, "Unknown"},          {"a-result", -1, "a"},
        {"-result", -1, ""},          {"x-cpril1-y", -1, "cpril1"},
        {"a-trace", -1, ""},          {"x-cpril1-result", -1, "x-cpril1"},
        {"x-cpril2-p", -1, "cpril2"}, {"ab-rslt", 6, "a"},
        {"a-rslt", 0, "a-rslt"},      {"a", 9, ""}};
    for (const auto& [name, length, expected] : types)
        EXPECT_EQ(expected, Store::str2Type(name, length)) << name;
}

TEST(DirNames, ValidPortsAndTypes) {
    for (const std::string name : {"port", "xport", "10gport2", "", "port3", "Port", "xport-result"})
        EXPECT_EQ(name == "port" || name == "xport" || name == "10gport2", Store::isValidPortDirName(name))
            << name;
    for (const char* const name : {"-result", "a-setup", "a-trace", "a-mpeg", "a-rslt", "a-prof", "a-rtd"})
        EXPECT_TRUE(Store::isValidTypeDirName(name)) << name;
    for (const char* const name : {"", "result", "a-Result", "a-result2"})
        EXPECT_FALSE(Store::isValidTypeDirName(name)) << name;
    EXPECT_TRUE(Store::isDotOrDotDot(".") && Store::isDotOrDotDot(".."));
    EXPECT_FALSE(Store::isDotOrDotDot(nullptr) || Store::isDotOrDotDot("") || Store::isDotOrDotDot("..."));
}

TEST(DirNames, ModesOfFamilies) {
    const std::pair<const char*, int> rows[] = {
        {"ethernet", 1}, {"FIBER CHANNEL", 2}, {"SONET x", 3}, {"xOTN", 3}, {"SDH/PDH", 3},
        {"PDH", 3},      {"odu0", 4},          {"OTU-X", 5},   {"otux", 5}, {"Common", 6},
        {"cable", 7},    {"CPRI", 8},          {"sdh", 0},     {"", 0},     {"Ethernet ", 0}};
    for (const auto& [name, expected] : rows) {
        for (int mode = 1; mode <= 9; ++mode)
            EXPECT_EQ(mode == expected, Store::isModeMatched(static_cast<TestMode>(mode), name)) << name;
    }
}

TEST_F(FilesTest, ListDirNamesEveryEntryThatIsNoDirectory) {
    writeFile(at("d/e/f"), "");
    std::filesystem::create_directory_symlink(at("d"), at("d/link"));
    Names out;
    Store().listDir(at("d").c_str(), out);
    out.sort();
    EXPECT_EQ((Names{at("d/e/f"), at("d/link")}), out);
}

TEST_F(FilesTest, RecordsAreNamedByLabelsWithinTheLimit) {
    readSections("<mode><e name='m' label='Mode'/></mode><category><e key='t' label='Type'/></category>"
                 "<port><e name='p' label='Port'/></port>");
    _ResultInfo info;
    info.mode = "m";
    info.port = "p";
    info.test = "Screen";
    info.type = "t";
    info.rsltype = "pcap";
    EXPECT_EQ("[]-[Type]-[Port]-[Mode]", CResultItem::uniqueName(&info));
    EXPECT_TRUE(CResultItem::isPacketCapture(&info) && CResultItem::isScreenShot(&info));
    EXPECT_FALSE(CResultItem::isOTDR(&info) || CResultItem::isFiberScope(&info));
    info.name.assign(300, 'x');
    EXPECT_EQ("m_p_Screen_pcap_" + std::string(239, 'x'), Store::makeUniqueId(&info));
    EXPECT_EQ("[" + std::string(254, 'x'), CResultItem::uniqueName(&info));
}

} // namespace
