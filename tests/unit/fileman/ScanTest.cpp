#include "ConfiguredTree.h"

namespace {

using Conf = CFileManConf;

class VocabularyScan : public PreparedStorage {
protected:
    // Scans a storage that consists of this directory.
    static void scan(const std::string& path) {
        std::string modes, types;
        for (const auto& [name, dir] : {std::pair<std::string, std::string>("A", "first"),
                                        {"SDH", "ktp-rslt"},
                                        {"OTUX", "otux"},
                                        {"ODU0", "odu0-prof' prof_dir_name='odu0p1-bert"},
                                        {"CPRI", "cpri"},
                                        {"X", "x-rslt"},
                                        {"KTS", "kts-a-rslt"},
                                        {"KTB", "ktb-rslt"}})
            modes.append("<e name='" + name + "' rslt_dir_name='" + dir + "'/>");
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

// The modes, types and ports; "-" means an empty list. An unknown name registers the empty name.
TEST_F(VocabularyScan, DirectoriesRegisterModesTypesPorts) {
    using Row = std::pair<const char*, const char*>;
    const std::vector<Row> kSdhOnlyBelow10gOr2g5 = {
        {"2g5/p2/bert", "SDH bert! P2"},     {"1ge/bert", "- - -"}, {"2g5/JIT", "SDH jit! -"},
        {"2g5/ktp-sonet-ds3", "SDH ds3! -"}, {"ktp-ds1", "- - -"},  {"sdh10g-x", "SDH bert! -"}};
    const std::vector<Row> kModes = {{"ktr", "A - -"},
                                     {"cpri", "CPRI - -"},
                                     {"p1/otux", "OTUX bert! P1"},
                                     {"odu0p1-bert", "- bert! P1"},
                                     {"odu0p2-bert", "- bert! P2"},
                                     {"odu0-prof", "ODU0 - -"},
                                     {"odu0", " - -"},
                                     {"2g5-cpril1-rslt", "- cpril1! -"},
                                     {"2g5-cpril2x-prof", "- cpril2! -"}};
    const std::vector<Row> kTypes = {{"x-rslt/xmeter-result", "X xmeter! -"},
                                     {"audio-trace", "- audio-trace! -"},
                                     {"screen", "KTB screen! -"},
                                     {"opm", "- opm! -"},
                                     {"Screen", "- - -"}};
    // They lose one letter, until another mode directory.
    const std::vector<Row> kTypesBehindKts = {{"kts-a-rslt/xmeter-setup", "KTS meter! -"},
                                              {"kts-a-rslt/xmeter-result", "KTS meter! -"},
                                              {"kts-a-rslt/xvideo-mpeg", "KTS xvideo! -"},
                                              {"kts-a-rslt/ktr/xmeter-result", "KTS,A xmeter! -"},
                                              {"kts-a-rslt/ktp-2g5/xmeter-result", "KTS,SDH bert!,xmeter! -"},
                                              {"kts-a-rslt/x-rslt/xmeter-result", "KTS,X xmeter! -"},
                                              {"kts-a-rslt/-result", "KTS  -"}};
    const std::vector<Row> kPorts = {{"10g-xport2", "- - 10G P2"}, {"geport2", "- - GE"}, {"zport", "- - "}};
    const std::vector<Row> kNotEntered = {{"usbd/geport", "- - -"}, {"a_files/geport", "- - -"}};
    for (const auto& rows : {kSdhOnlyBelow10gOr2g5, kModes, kTypes, kTypesBehindKts, kPorts, kNotEntered}) {
        for (const auto& [path, expected] : rows) {
            scan(path);
            EXPECT_EQ(expected, joined(listFrom(Conf::getCurrentMode)) + " " +
                                    joined(listFrom(Conf::getCurrentTypeNames)) + " " +
                                    joined(listFrom(Conf::getCurrentPort)))
                << path;
        }
    }
}

// A type also belongs to the mode of its directory, even if another mode was found in between.
TEST_F(VocabularyScan, TypesBelongToTheModeOfTheirDirectory) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"cpri/xmeter-result/ktr/2g5-cpril2-prof", "CPRI", "xmeter!,cpril2!"},
        {"otux/xmeter-result/ktr/otux", "OTUX", "xmeter!,bert!"},
        {"odu0-prof/xmeter-result/ktr/odu0p1-bert", "ODU0", "xmeter!,bert!"},
        {"ktr/2g5-cpril1-rslt", "CPRI", "-"},
        {"ktr/screen", "KTB", "screen!"}};
    for (const auto& [path, mode, types] : rows) {
        scan(path);
        EXPECT_EQ(types, joined(listFrom(Conf::getTypeByModeName, mode))) << path;
    }
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
