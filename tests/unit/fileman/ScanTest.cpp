#include "ConfiguredTree.h"

namespace {

using Conf = CFileManConf;

class VocabularyScan : public PreparedStorage {
protected:
    // Scans a storage that consists of this directory.
    static void scan(const std::string& path) {
        reset();
        useDocument(readFile("tests/unit/fileman/vocabulary.xml"));
        std::filesystem::create_directories("/home/" + path);
        CFileManager().scanResultFilters("/home");
    }
};

TEST_F(VocabularyScan, DirectoriesRegisterModesTypesPorts) {
    std::ifstream table("tests/unit/fileman/vocabulary.txt");
    int count = 0;
    for (std::string row; std::getline(table, row);) {
        if (row.front() == '#')
            continue;
        const std::string path = row.substr(0, row.find(" => "));
        scan(path);
        std::string found = path + " => ";
        for (const std::string& mode : listFrom(Conf::getCurrentMode))
            found += mode + ":" + joined(listFrom(Conf::getTypeByModeName, mode)) + " ";
        found +=
            joined(listFrom(Conf::getCurrentTypeNames)) + " [" + joined(listFrom(Conf::getCurrentPort)) + "]";
        EXPECT_EQ(row, found);
        ++count;
    }
    EXPECT_LT(30, count);
}

std::string portsText(const std::map<std::string, Names>& ports) {
    std::string text;
    for (const auto& [port, types] : ports)
        text += " " + port + "=" + joined(sorted(types));
    return text;
}

// One line for each module, then one for each of its modes: the profiles, then the results.
std::string scanText() {
    std::string text;
    for (const auto& [name, module] : Conf::getScanModuleInfo()) {
        text +=
            name + ": " + joined(sorted(module.profTypes)) + " / " + joined(sorted(module.rsltTypes)) + "\n";
        for (const auto& [mode, ports] : module.modes)
            text += "  " + mode + ":" + portsText(ports.profPorts) + " /" + portsText(ports.rsltPorts) + "\n";
    }
    return text;
}

class ModuleScan : public ConfiguredTree {};

TEST_F(ModuleScan, RecordsTypesAndPortsOfEachModule) {
    dirs({"e-rslt/geport2/rfc-result", "e-rslt/geport2/abcd-rslt", "e-rslt/geport3/no-result",
          "e-prof/geport/abc-trace", "com/xeport/power-result", "com/other/no-result"});
    files({"e-rslt/geport/file-result"});
    CFileManager().scanDir();
    EXPECT_EQ("10G: - / fmonitor,rfc,x\n"
              "  E: GE=abc,rfc XE=x / GE=ab,rfc XE=rfc\n"
              "2G5: osa / bert,mtie\n"
              "  OSA: /\n"
              "  SDH/PDH: /\n"
              "CPRI: - / cpri-layer1,rfc\n"
              "  C: /\n"
              "Common: opm / opm\n"
              "  Common: GE=opm / GE=opm XE=power\n",
              scanText());
}

TEST_F(ModuleScan, FirstOfTwoCommonDirectoriesWithOnePortStays) {
    dirs({"com/geport2/b-result"});
    const bool plainIsFirst = std::filesystem::directory_iterator("/home/com")->path().filename() == "geport";
    CFileManager().scanCommonDir();
    EXPECT_EQ(std::string("Common: opm / opm\n  Common: GE=opm / GE=") + (plainIsFirst ? "opm" : "b") + "\n",
              scanText());
}

class ScanFilters : public PreparedStorage {};

TEST_F(ScanFilters, Otu3OfThe100GeDirectoriesBelongsTo40Ge) {
    configure("<port><e name='O' key='otu3'/></port>");
    CFileManager().scanOtu3In100geDir();
    EXPECT_EQ("", scanText());
    dirs({"fileman/100ge/ktw-rslt/otu3port/otu3port/bert-result",
          "fileman/100ge/ktw-prof/otu3port/xport/no-setup"});
    CFileManager().scanOtu3In100geDir();
    EXPECT_EQ("40GE: - / -\n  OTU3: / O=bert\n", scanText());
}

TEST_F(ScanFilters, BothScansCanRunLater) {
    configure("<module><e name='M'><o mode_name='SDH/PDH'>"
              "<h test_name='Result' dir_name='s'/></o></e></module>");
    dirs({"s", "10gport"});
    CFileManager store;
    store.deferScan();
    store.scanFilters();
    EXPECT_EQ("-", joined(listFrom(Conf::getCurrentPort)));
    store.finishScan();
    EXPECT_EQ("M: - / bert\n  SDH/PDH: /\n", scanText());
    EXPECT_EQ("10G P1", joined(listFrom(Conf::getCurrentPort)));
}

} // namespace
