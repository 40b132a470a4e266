#include "ConfiguredTree.h"

namespace {

using Conf = CFileManConf;

class VocabularyScan : public PreparedStorage {
protected:
    // Scans a storage that consists of this directory.
    static void scan(const std::string& path) {
        std::string modes, types;
        for (const std::string attributes :
             {"name='A' rslt_dir_name='first'", "name='SDH' rslt_dir_name='ktp-rslt'",
              "name='OTUX' rslt_dir_name='otux'",
              "name='ODU0' rslt_dir_name='odu0-prof' prof_dir_name='odu0p1-bert'",
              "name='CPRI' rslt_dir_name='cpri'", "name='X' rslt_dir_name='x-rslt'",
              "name='KTS' rslt_dir_name='kts-a-rslt'", "name='KTB' rslt_dir_name='ktb-rslt'"})
            modes.append("<e " + attributes + "/>");
        for (const std::string key : {"bert", "ds3", "sonet", "jit", "cpril1", "cpril2", "meter", "xmeter",
                                      "audio-trace", "xvideo", "screen", "opm"})
            types.append("<e name='" + key + "!' key='" + key + "'/>");
        reset();
        configure("<mode>" + modes + "</mode><category>" + types +
                  "</category><port><e name='GE' key='ge'/></port>");
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

TEST_F(ModuleScan, ScanningADirectoryAgainAddsNothing) {
    dirs({"d/layer2-prof"});
    CFileManager store;
    LoadInfo info{"CPRI", "C", "d", 0, {"layer2-prof"}, 0};
    ScanModuleToModeInfo module;
    ScanModeToPortInfo mode;
    for (int i = 0; i < 2; ++i)
        store.scanSubDir(info, module, mode);
    EXPECT_EQ("cpri-layer2", joined(module.profTypes));
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

TEST_F(ScanFilters, ReadsTheDocumentAndRunsBothScans) {
    CFileManager store;
    store.scanFilters();
    EXPECT_TRUE(Conf::getModulesInfo().empty());
    writeFile(Conf::getConfFileName(), "<c><filter><module><e name='M'><o mode_name='SDH/PDH'>"
                                       "<h test_name='Result' dir_name='s'/></o></e></module></filter></c>");
    dirs({"s", "10gport"});
    store.scanFilters();
    EXPECT_EQ("10G P1", joined(listFrom(Conf::getCurrentPort))) << "the disk is read again";
    dirs({"10gport2"});
    CFileManager deferring;
    deferring.deferScan();
    deferring.scanFilters();
    EXPECT_EQ("10G P1", joined(listFrom(Conf::getCurrentPort)));
    deferring.finishScan();
    EXPECT_EQ("M: - / bert\n  SDH/PDH: /\n", scanText());
    EXPECT_EQ("10G P1,10G P2", joined(sorted(listFrom(Conf::getCurrentPort))));
}

} // namespace
