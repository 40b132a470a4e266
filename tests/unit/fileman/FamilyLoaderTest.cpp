#include "StorageFixture.h"

namespace {

using Loader = int (CFileManager::*)(const _ModeInfo&);

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

struct Family {
    const char* name;
    Loader loader;
    bool looksAtNames; // whether it lists nothing if the mode has no directory name for the half
    Rows rows;
    Rows current; // additional rows if the types "Bert" and "RFC" are current
};

Rows both(Rows rows, const Rows& more) {
    rows.insert(rows.end(), more.begin(), more.end());
    std::sort(rows.begin(), rows.end());
    return rows;
}

// The rows of a loader with port directories below one mode directory, with the labels of two ports.
Rows ports(const std::string& kind, const std::string& modeDir, const std::string& tenGig,
           const std::string& two) {
    return both({}, {tenGig + kind + "pcap " + modeDir + "10gport2/pcap-result/a.html",
                     "GE" + kind + "cpril1 " + modeDir + "geport/x-cpril1-rtd/a.html",
                     "GE" + kind + "rfc " + modeDir + "geport/rfc-result/a.html",
                     two + kind + "rfc " + modeDir + "my2g5port/rfc-setup/a.html"});
}

Rows fiberProfiles(const std::string& modeDir) {
    return {"10G M1|Profile|pcap- " + modeDir + "10gport2/pcap-result/a.html",
            "GE|Profile|rfc- " + modeDir + "geport/rfc-result/a.html",
            "GE|Profile|x-cpri " + modeDir + "geport/x-cpril1-rtd/a.html",
            "Two|Profile|rfc " + modeDir + "my2g5port/rfc-setup/a.html"};
}

const Rows kLast1ge = {"GE|Result|rfc 1ge/r/geport/rfc-result/Last configuration.html"};
const Rows kLastRoot = {"GE|Result|rfc root/r/geport/rfc-result/Last configuration.html",
                        "|Result|opm root/r/opm/a.png"};
const Rows kLastProfile = {"GE|Profile|rfc root/p/geport/rfc-result/Last configuration.html"};
const Rows kEthernetProfiles =
    both(ports("|Profile|", "1ge/p/", "10G M1", ""), ports("|Profile|", "10g/p/", "10G M1", ""));

// clang-format off
const Family kFamilies[] = {
    {"EthernetResult",    &CFileManager::loadEthernetResult,    true,  both(ports("|Result|", "1ge/r/", "10G M1", ""), kLast1ge), {}},
    {"EthernetProfile",   &CFileManager::loadEthernetProfile,   true,  kEthernetProfiles, {}},
    {"FiberResult",       &CFileManager::loadFiberResult,       true,  both(ports("|Result|", "1ge/r/", "10G M1", "Two"), kLast1ge), {}},
    {"FiberProfile",      &CFileManager::loadFiberProfile,      true,  both(fiberProfiles("1ge/p/"), fiberProfiles("10g/p/")), {}},
    {"SDHResult",         &CFileManager::loadSDHResult,         false, {}, {"M1|Result|bert 2g5/html-files/p1/bert/a.html"}},
    {"SDHProfile",        &CFileManager::loadSDHProfile,        false, {}, {"|Profile|bert 2g5/html-files/x-prof/a.html"}},
    {"CommonResult",      &CFileManager::loadCommonResult,      true,  both(ports("|Result|", "root/r/", "10G P2", "Two"), kLastRoot), {}},
    {"CommonProfile",     &CFileManager::loadCommonProfile,     true,  both(ports("|Profile|", "root/p/", "10G P2", "Two"), kLastProfile), {}},
    {"OTUXResult",        &CFileManager::loadOTUXResult,        false, {}, {"M1|Result|bert 10g/html-files/p1/otux/a.html",
                                                                           "M2|Result|bert 10g/html-files/p2/otux/Last configuration.html"}},
    {"OTUXProfile",       &CFileManager::loadOTUXProfile,       true,  ports("|Profile|", "10g/p/", "10G M1", ""), {}},
    {"ODU0Result",        &CFileManager::loadODU0Result,        false, {"10G M2|Result|rfc odu0-rslt/10gport/rfc-result/a.html"},
                                                                       {"M1|Result|bert odu0-rslt/x-odu0p1-bert/a.html",
                                                                        "M2|Result|bert odu0-rslt/odu0p2-bert-y/Last configuration.html"}},
    {"ODU0Profile",       &CFileManager::loadODU0Profile,       true,  ports("|Profile|", "odu0-prof/p/", "10G M1", ""), {}},
    {"CableResult",       &CFileManager::loadCableResult,       true,  {"|Result| root/r/rfc-rslt/a.png"}, {}},
    {"CableProfile",      &CFileManager::loadCableProfile,      true,  {"|Profile|rfc root/p/rfc-mpeg/a.png", "|Profile|rfc root/p/rfc-setup/a.png",
                                                                        "|Profile|rfc-trace root/p/rfc-trace/a.png"}, {}},
    {"CPRILayerResult",   &CFileManager::loadCPRILayerResult,   true,  {"M1|Result|rfc cpri/p1/rfc-result/Last configuration.html",
                                                                        "M2|Result| cpri/p2/rfc-rslt/a.html"}, {}},
    {"CPRILayerProfile",  &CFileManager::loadCPRILayerProfile,  true,  {"|Profile| cpri/rfc-rtd/a.html", "|Profile|rfc cpri/rfc-setup/a.html"}, {}},
};
// clang-format on

TEST_F(FamilyTree, EachLoaderListsOnlyItsOwnFiles) {
    for (const Family& family : kFamilies) {
        SCOPED_TRACE(family.name);
        CFileManConf::clearCurrentTypes();
        Rows expected = family.rows;
        // Only among Ethernet results do captures have their own kind.
        if (family.loader == &CFileManager::loadEthernetResult)
            expected[0] = "10G M1|PCAP|pcap 1ge/r/10gport2/pcap-result/a.html";
        EXPECT_EQ(expected, rows(family.loader));
        const bool isResult = std::string(family.name).find("Result") != std::string::npos;
        EXPECT_EQ(family.looksAtNames ? Rows{} : expected, rows(family.loader, {}, isResult ? "" : "r"));
        CFileManConf::addCurrentType("Bert");
        CFileManConf::addCurrentType("RFC");
        EXPECT_EQ(both(expected, family.current), rows(family.loader));
    }
}

TEST_F(FamilyTree, FilterSeesRawPortsAndStrippedTypes) {
    // clang-format off
    const std::tuple<Loader, Names, Names, Rows> kRows[] = { // tests, ports
        {&CFileManager::loadEthernetResult,  {},                    {"10G P2"},     {"10G M1|PCAP|pcap 1ge/r/10gport2/pcap-result/a.html"}},
        {&CFileManager::loadEthernetResult,  {"cpril1"},            {},             {"GE|Result|cpril1 1ge/r/geport/x-cpril1-rtd/a.html"}},
        {&CFileManager::loadFiberProfile,    {"pcap"},              {"10G P2"},     {fiberProfiles("10g/p/")[0], fiberProfiles("1ge/p/")[0]}},
        {&CFileManager::loadSDHResult,       {"other", "rfc-prof"}, {"M2"},         {"M2|Result|other 2g5/html-files/p2/other/a.html"}},
        {&CFileManager::loadSDHProfile,      {"ds1", "ds3"},        {"M1"},         {"|Profile|ds1 2g5/html-files/x-ds3-ds1-prof/a.html"}},
        {&CFileManager::loadODU0Result,      {"bert"},              {"M2"},         {"M2|Result|bert odu0-rslt/odu0p2-bert-y/Last configuration.html"}},
        {&CFileManager::loadODU0Result,      {},                    {"10G P1"},     {"10G M2|Result|rfc odu0-rslt/10gport/rfc-result/a.html"}},
    };
    // clang-format on
    for (const auto& [loader, tests, ports, expected] : kRows)
        EXPECT_EQ(expected, rows(loader, {{}, {}, tests, ports, false, false, {}}));
}

} // namespace
