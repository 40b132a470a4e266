#include "StorageFixture.h"

namespace {

using Store = CFileManager;
using Loader = int (Store::*)(const _ModeInfo&);

// One tree for all loaders: below every root are files that one family lists and another does not.
class FamilyTree : public PreparedStorage {
protected:
    FamilyTree() {
        configure("<category><e name='Bert' key='bert'/><e name='RFC' key='rfc'/></category>"
                  "<port><e name='GE' key='ge'/><e name='Two' key='my2g5'/></port>");
        for (const std::string modeDir :
             {"1ge/r/", "1ge/p/", "10g/p/", "root/r/", "root/p/", "odu0-prof/p/"}) {
            for (const std::string file :
                 {"geport/rfc-result/a.html", "geport/rfc-result/a.txt", "geport/x-cpril1-rtd/a.html",
                  "geport/rfc-result/Last configuration.html", "geport/plain/a.html",
                  "gedir/rfc-result/a.html", "10gport2/pcap-result/a.html", "my2g5port/rfc-setup/a.html"})
                writeFile("/home/" + modeDir + file, "");
        }
        files({"root/r/opm/a.png", "root/r/rfc-rslt/a.png", "root/p/rfc-setup/a.png",
               "root/p/rfc-trace/a.png", "root/p/rfc-mpeg/a.png", "root/p/rfc-result/a.png"});
        files({"2g5/html-files/p1/bert/a.html", "2g5/html-files/p2/rfc-prof/a.html",
               "2g5/html-files/p2/other/a.html", "2g5/html-files/sdh2g5-prof/a.html",
               "2g5/html-files/x-ds3-ds1-prof/a.html", "2g5/html-files/x-prof/a.html",
               "2g5/html-files/x-setup/a.html", "10g/html-files/p1/otux/a.html",
               "10g/html-files/p2/otux/Last configuration.html"});
        files({"odu0-rslt/x-odu0p1-bert/a.html", "odu0-rslt/odu0p2-bert-y/Last configuration.html",
               "odu0-rslt/10gport/rfc-result/a.html", "odu0-rslt/geport/rfc-result/Last configuration.html"});
        files({"cpri/p1/rfc-result/Last configuration.html", "cpri/p2/rfc-rslt/a.html",
               "cpri/rfc-setup/a.html", "cpri/rfc-rslt/a.html", "cpri/rfc-rtd/a.html"});
        std::filesystem::create_directory_symlink("rfc-setup", "/home/cpri/link-setup");
    }

    // "port|kind|type path" of each record.
    static Rows rows(Loader loader, const _ResultFilter& filter = {}, const std::string& dirNames = "rp") {
        const _ModeInfo mode{"label", "M", dirNames.substr(0, 1),
                             dirNames.substr(std::min<std::size_t>(1, dirNames.size())), false};
        Rows rows = load([&](CFileManager& store) { return (store.*loader)(mode); }, filter);
        for (std::string& row : rows)
            row.erase(0, row.find('|', 3) + 1);
        std::sort(rows.begin(), rows.end());
        return rows;
    }
};

// The file has the rows of each loader. "+" marks those that appear only when their types are current.
TEST_F(FamilyTree, EachLoaderListsOnlyItsOwnFiles) {
    const std::tuple<std::string, Loader, Loader> families[] = {
        {"Ethernet", &Store::loadEthernetResult, &Store::loadEthernetProfile},
        {"Fiber Channel", &Store::loadFiberResult, &Store::loadFiberProfile},
        {"SDH", &Store::loadSDHResult, &Store::loadSDHProfile},
        {"Common", &Store::loadCommonResult, &Store::loadCommonProfile},
        {"OTU-X", &Store::loadOTUXResult, &Store::loadOTUXProfile},
        {"ODU0", &Store::loadODU0Result, &Store::loadODU0Profile},
        {"Cable", &Store::loadCableResult, &Store::loadCableProfile},
        {"CPRI", &Store::loadCPRILayerResult, &Store::loadCPRILayerProfile}};
    std::string text;
    for (const auto& [name, results, profiles] : families) {
        for (const auto& [half, loader, otherDir] :
             {std::tuple(" results", results, ""), {" profiles", profiles, "r"}}) {
            CFileManConf::clearCurrentTypes();
            const Rows always = rows(loader);
            CFileManConf::addCurrentType("Bert");
            CFileManConf::addCurrentType("RFC");
            const bool needsName = rows(loader, {}, otherDir).empty();
            text += name + half + (needsName ? ", if the mode names a directory:\n" : ", always:\n");
            for (const std::string& row : rows(loader))
                text += (std::count(always.begin(), always.end(), row) != 0 ? "  " : "+ ") + row + "\n";
        }
    }
    EXPECT_EQ(readFile("tests/unit/fileman/loaded-families.txt"), text);
}

TEST_F(FamilyTree, FilterSeesRawPortsAndStrippedTypes) {
    const std::tuple<Loader, Names, Names, Rows> filters[] = {
        // the tests and ports of the filter
        {&Store::loadEthernetResult, {}, {"10G P2"}, {"10G M1|PCAP|pcap 1ge/r/10gport2/pcap-result/a.html"}},
        {&Store::loadEthernetResult, {"cpril1"}, {}, {"GE|Result|cpril1 1ge/r/geport/x-cpril1-rtd/a.html"}},
        {&Store::loadFiberProfile,
         {"pcap"},
         {"10G P2"},
         {"10G M1|Profile|pcap- 10g/p/10gport2/pcap-result/a.html",
          "10G M1|Profile|pcap- 1ge/p/10gport2/pcap-result/a.html"}},
        {&Store::loadSDHResult, {"other"}, {"M2"}, {"M2|Result|other 2g5/html-files/p2/other/a.html"}},
        {&Store::loadSDHProfile, {"ds1"}, {"M1"}, {"|Profile|ds1 2g5/html-files/x-ds3-ds1-prof/a.html"}},
        {&Store::loadODU0Result,
         {"bert"},
         {"M2"},
         {"M2|Result|bert odu0-rslt/odu0p2-bert-y/Last configuration.html"}}};
    for (const auto& [loader, tests, ports, expected] : filters)
        EXPECT_EQ(expected, rows(loader, {{}, {}, tests, ports, false, false, {}}));
}

} // namespace
