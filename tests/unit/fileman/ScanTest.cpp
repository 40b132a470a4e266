#include "StorageFixture.h"

namespace {

using Conf = CFileManConf;

class VocabularyScan : public PreparedStorage {
protected:
    static void configureAll() {
        std::string modes, types;
        for (const auto& [name, dir] : {std::pair("A", "first"),
                                        {"SDH", "ktp-rslt"},
                                        {"OTUX", "otux"},
                                        {"ODU0", "odu0-prof' prof_dir_name='odu0p1-bert"},
                                        {"CPRI", "cpri"},
                                        {"X", "x-rslt"},
                                        {"KTS", "kts-a-rslt"},
                                        {"KTB", "ktb-rslt"}})
            modes += std::string("<e name='") + name + "' rslt_dir_name='" + dir + "'/>";
        for (const std::string key : {"bert", "isdn", "ds1", "ds3", "sonet", "jit", "cpril1", "cpril2",
                                      "meter", "xmeter", "audio-trace", "xvideo", "screen", "opm"})
            types += "<e name='" + key + "!' key='" + key + "'/>";
        configure("<mode>" + modes + "</mode><category>" + types +
                  "</category><port><e name='GE' key='ge'/></port>");
    }
};

// "-" means an empty list. An unknown name registers the empty name.
TEST_F(VocabularyScan, DirectoriesRegisterModesTypesPorts) {
    const std::pair<const char*, const char*> rows[] = {
        // Only below 10g or 2g5.
        {"2g5/p2/bert", "SDH bert! P2"},
        {"1ge/bert", "- - -"},
        {"2g5/isdn", "SDH isdn! -"},
        {"2g5/JIT", "SDH jit! -"},
        {"2g5/ktp-ds1", "SDH ds1! -"},
        {"ktp-ds1", "- - -"},
        {"2g5/ktp-sonet-ds3", "SDH ds3! -"},
        {"sdh10g-x", "SDH bert! -"},
        {"sdh2g5-prof", "SDH bert! -"},
        // Mode directories.
        {"ktr", "A - -"},
        {"cpri", "CPRI - -"},
        {"p1/otux", "OTUX bert! P1"},
        {"odu0p1-bert", "- bert! P1"},
        {"odu0p2-bert", "- bert! P2"},
        {"odu0-prof", "ODU0 - -"},
        {"odu0", " - -"},
        {"y-prof", " - -"},
        {"2g5-cpril1-rslt", "- cpril1! -"},
        {"2g5-cpril2x-prof", "- cpril2! -"},
        // Types. After a mode directory kts-... they lose one letter, until another mode directory.
        {"x-rslt/xmeter-result", "X xmeter! -"},
        {"x-rslt/meter-setup", "X meter! -"},
        {"kts-a-rslt/xmeter-setup", "KTS meter! -"},
        {"kts-a-rslt/xmeter-result", "KTS meter! -"},
        {"kts-a-rslt/xvideo-mpeg", "KTS xvideo! -"},
        {"kts-a-rslt/ktr/xmeter-result", "KTS,A xmeter! -"},
        {"kts-a-rslt/ktp-2g5/xmeter-result", "KTS,SDH bert!,xmeter! -"},
        {"kts-a-rslt/x-rslt/xmeter-result", "KTS,X xmeter! -"},
        {"kts-a-rslt/-result", "KTS  -"},
        {"audio-trace", "- audio-trace! -"},
        {"screen", "KTB screen! -"},
        {"opm", "- opm! -"},
        {"Screen", "- - -"},
        // Ports.
        {"10g-xport2", "- - 10G P2"},
        {"geport2", "- - GE"},
        {"zport", "- - "},
        // Directories that are not entered.
        {"usbd/geport", "- - -"},
        {"a_files/geport", "- - -"},
        {"other/deep/geport", "- - GE"},
    };
    for (const auto& [path, expected] : rows) {
        reset();
        configureAll();
        dirs({path});
        CFileManager().scanResultFilters("/home");
        EXPECT_EQ(expected, joined(listFrom(Conf::getCurrentMode)) + " " +
                                joined(listFrom(Conf::getCurrentTypeNames)) + " " +
                                joined(listFrom(Conf::getCurrentPort)))
            << path;
    }
}

// A type also belongs to the mode of its directory, even if another mode was found in between.
TEST_F(VocabularyScan, TypesBelongToTheModeOfTheirDirectory) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"cpri/xmeter-result/ktr/2g5-cpril1-rslt", "CPRI", "xmeter!,cpril1!"},
        {"cpri/xmeter-result/ktr/2g5-cpril2-prof", "CPRI", "xmeter!,cpril2!"},
        {"otux/xmeter-result/ktr/otux", "OTUX", "xmeter!,bert!"},
        {"odu0-prof/xmeter-result/ktr/odu0p1-bert", "ODU0", "xmeter!,bert!"},
        {"ktr/2g5-cpril1-rslt", "CPRI", "-"},
        {"ktr/screen", "KTB", "screen!"},
    };
    for (const auto& [path, mode, types] : rows) {
        reset();
        configureAll();
        dirs({path});
        CFileManager().scanResultFilters("/home");
        EXPECT_EQ(types, joined(listFrom(Conf::getTypeByModeName, mode))) << path;
    }
}

std::string portsText(const std::map<std::string, Names>& ports) {
    std::string text;
    for (const auto& [port, types] : ports)
        text += " " + port + "=" + joined(sorted(types));
    return text;
}

// One line for each module, then one for each of its modes.
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

class ModuleScan : public PreparedStorage {};

TEST_F(ModuleScan, RecordsTypesAndPortsOfEachModule) {
    configure(R"(
        <port>
          <e name='GE' key='ge'/>
          <e name='X' key='x'/>
        </port>
        <module>
          <e name='10G'>
            <o mode_name='E'>
              <h test_name='Result' dir_name='e-rslt' under_port_dir='true' list='geport'/>
              <h test_name='Profile' dir_name='e-prof' under_port_dir='true' list='geport'/>
            </o>
          </e>
          <e name='2G5'>
            <o mode_name='SDH/PDH'>
              <h test_name='Profile' dir_name='s-prof'/>
            </o>
          </e>
          <e name='CPRI'>
            <o mode_name='C'>
              <h test_name='Result' dir_name='c-rslt' list='cpri-layer1-rslt,other,gone'/>
            </o>
          </e>
          <e name='Gone'>
            <o mode_name='G'>
              <h test_name='Result' dir_name='g-rslt'/>
            </o>
          </e>
          <e name='Common'>
            <c test_name='Result' key='opm' dir_name='com'/>
            <c test_name='Profile' key='gone' dir_name='gone'/>
            <c test_name='Screen' key='s' dir_name='ktb'/>
          </e>
        </module>
        <extraDir>
          <e module='10G' mode='E' key='gone' dir_name='gone'/>
          <e module='10g' mode='e' key='extra' dir_name='x1' test_name='Result'/>
          <e module='10G' mode='E' key='extra' dir_name='x1' test_name='Result'/>
          <e module='10G' mode='E' port='GE' key='rfc' dir_name='x1' test_name='Result'/>
          <e module='10G' mode='E' port='X' key='t' dir_name='x1'/>
        </extraDir>)");
    dirs({"e-rslt/geport/rfc-result", "e-rslt/geport2/rfc-result", "e-rslt/geport2/abcd-rslt",
          "e-rslt/geport/plain", "e-rslt/xport/no-result", "e-rslt/geport3/no-result",
          "e-prof/geport/rfc-setup", "e-prof/geport/abc-trace", "2g5/mtie-results", "s-prof",
          "c-rslt/cpri-layer1-rslt", "c-rslt/other", "c-rslt/undeclared", "x1", "ktb",
          "com/geport/power-result", "com/xport/p-result", "com/other/no-result"});
    files({"e-rslt/a fmonitor file", "e-rslt/geport/file-result"});
    CFileManager().scanDir();
    EXPECT_EQ("10G: - / extra,fmonitor\n"
              "  E: GE=abc,rfc X=t / GE=ab,rfc\n"
              "2G5: bert / mtie\n"
              "  SDH/PDH: /\n"
              "CPRI: - / cpri-layer1,other\n"
              "  C: /\n"
              "Common: - / opm\n"
              "  Common: / GE=power X=p\n",
              scanText());
}

TEST_F(ModuleScan, FirstOfTwoCommonDirectoriesWithOnePortStays) {
    configure(R"(
        <port>
          <e name='GE' key='ge'/>
        </port>
        <module>
          <e name='Common'>
            <c test_name='Profile' key='k' dir_name='com'/>
          </e>
        </module>)");
    dirs({"com/geport/a-setup", "com/geport2/b-setup"});
    const bool plainIsFirst = std::filesystem::directory_iterator("/home/com")->path().filename() == "geport";
    CFileManager().scanDir();
    EXPECT_EQ(std::string("Common: k / -\n  Common: GE=") + (plainIsFirst ? "a" : "b") + " /\n", scanText());
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

TEST_F(ModuleScan, Otu3OfThe100GeDirectoriesBelongsTo40Ge) {
    configure("<port><e name='O' key='otu3'/></port>");
    CFileManager().scanOtu3In100geDir();
    EXPECT_EQ("", scanText());
    dirs({"fileman/100ge/ktw-rslt/otu3port/otu3port/bert-result",
          "fileman/100ge/ktw-prof/otu3port/xport/no-setup"});
    CFileManager().scanOtu3In100geDir();
    EXPECT_EQ("40GE: - / -\n  OTU3: / O=bert\n", scanText());
}

class ScanFilters : public PreparedStorage {};

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
