#include "TestFiles.h"
#include "conf/Companion.h"
#include "conf/XmlLimits.h"

namespace {

using Conf = CFileManConf;

// The keys have another order than the document. Two entries of each kind share a label.
class Vocabulary : public FilesTest {
protected:
    Vocabulary() {
        readSections(R"(
        <mode>
          <e name='SDH' label='L' rslt_dir_name='s-rslt' prof_dir_name='s-prof' checked='true'/>
          <e name='Eth' label='l' rslt_dir_name='e-rslt' prof_dir_name='E-prof' checked='true'/>
        </mode>
        <category>
          <e name='RFC' label='R' key='rfc6349' rslt_suffix='-rslt' prof_suffix='-prof' checked='true'/>
          <e name='rfc' label='r' key='rfc2544' rslt_suffix='-result' prof_suffix='-setup'/>
          <e name='BERT' label='B' key='bert' checked='true'/>
        </category>
        <port>
          <e name='P2' label='Port 2' key='ge2' dir='ge2port' checked='true'/>
          <e name='P1' label='10GE M1' key='ge' dir='geport'/>
        </port>
        <module>
          <e name='B' checked='true'/>
          <e name='A' checked='true'/>
        </module>)");
    }
};

void expectFirstMatches() {
    EXPECT_EQ("Eth", Conf::getModeName("e-PROF"));
    EXPECT_EQ("SDH", Conf::getModeName("S-rslt"));
    EXPECT_EQ("Eth", Conf::getModeName("ktr"));
    EXPECT_EQ("", Conf::getModeName("KTR"));
    EXPECT_EQ("rfc", Conf::getTypeName("RFC2544"));
    EXPECT_EQ("P1", Conf::getPortName("GE"));
    EXPECT_EQ("L", Conf::modeName2Label("sdh"));
    EXPECT_EQ("R", Conf::typeKey2Label("RFC6349"));
    EXPECT_EQ("Port 2", Conf::portName2Label("p2"));
    EXPECT_EQ("e-rslt", Conf::modeLabel2DirName("L", true));
    EXPECT_EQ("E-prof", Conf::modeLabel2DirName("L", false));
    EXPECT_EQ("Eth", Conf::modeLabel2ModeName("L"));
    EXPECT_EQ("rfc2544-result", Conf::typeLabel2DirName("R", true));
    EXPECT_EQ("rfc2544-setup", Conf::typeLabel2DirName("R", false));
    EXPECT_EQ("rfc2544", Conf::typeLabel2Key("R"));
    EXPECT_EQ("ge2port", Conf::portLabel2DirName("PORT 2", true));
    // The exchanged labels have priority over the document.
    EXPECT_EQ("10gport2", Conf::portLabel2DirName("10ge m1", true));
    EXPECT_EQ("10gport", Conf::portLabel2DirName("10GE M2", false));
    for (const auto& nothing : {Conf::getModeName("x"), Conf::getTypeName(""), Conf::getPortName("P1"),
                                Conf::typeLabel2DirName("x", true), Conf::getVerNum("1.0")})
        EXPECT_EQ("", nothing);
}

TEST_F(Vocabulary, LookupsTakeTheFirstMatchInAnyCase) {
    expectFirstMatches();
    std::string modes = "<e name='za' prof_dir_name='Both'/><e name='zb' rslt_dir_name='both'/>", entries;
    for (int i = 0; i < 100; ++i) {
        const std::string name = "z" + std::to_string(i);
        entries.append("<e label='z' rslt_dir_name='z' prof_dir_name='z' name='" + name + "' key='" + name +
                       "'/>");
    }
    readSections("<mode>" + modes + entries + "</mode><category>" + entries + "</category><port>" + entries +
                 "</port>");
    expectFirstMatches();
    EXPECT_EQ("za", Conf::getModeName("BOTH"));
    EXPECT_EQ("z0", Conf::typeLabel2Key("Z"));
    // An entry that is read later may be the first in key order.
    readSections("<category><e name='new' label='R' key='A'/></category>");
    EXPECT_EQ("A", Conf::typeLabel2Key("r"));
}

TEST_F(Vocabulary, DirectoryNames) {
    EXPECT_EQ("P1", Conf::str2Port("geport"));
    EXPECT_EQ("P1", Conf::str2Port("geXXXr"));
    EXPECT_EQ("P1", Conf::str2Port("ge"));
    EXPECT_EQ("", Conf::str2Port("tge"));
    EXPECT_EQ("P2", Conf::str2Port("ge2port", 4));
    EXPECT_EQ("P1", Conf::str2Port("ge", -1));
    EXPECT_EQ("", Conf::str2Port("ge", 3));
    EXPECT_EQ("a", Conf::str2Type("a-setup", 6));
    EXPECT_EQ("", Conf::str2Type("a", 2));
    EXPECT_EQ("a", Conf::str2Type("a", -1));
    for (const auto& unknown : {Conf::str2Port(""), Conf::str2Port("", 1), Conf::str2Type("", 0)})
        EXPECT_EQ("Unknown", unknown);
}

TEST_F(Vocabulary, ListsAreAppendedToOrReplaced) {
    Names out{"kept", "bert"};
    Conf::getAllTypeKeys(out);
    EXPECT_EQ((Names{"kept", "bert", "rfc2544", "rfc6349"}), out);
    EXPECT_EQ((Names{"BERT", "rfc", "RFC"}), listFrom(Conf::getAllTypeNames));
    EXPECT_EQ((Names{"P1", "P2"}), listFrom(Conf::getAllPortNames));
    EXPECT_EQ((Names{"A", "B"}), listFrom(Conf::getAllModuleNames));
    EXPECT_EQ((Names{"rfc2544", "rfc6349"}), listFrom(Conf::getTypeKeys, "Rfc"));
    Conf::addCurrentType("RFC");
    Conf::addCurrentType("BERT");
    Conf::addCurrentType("RFC");
    out = {"kept", "bert"};
    Conf::getCurrentTypeKeys(out);
    EXPECT_EQ((Names{"kept", "bert", "rfc2544", "rfc6349"}), out);
    Conf::getCurrentTypeNames(out);
    EXPECT_EQ((Names{"RFC", "BERT"}), out);
}

TEST_F(Vocabulary, TypesBelongToTheModeAddedLast) {
    Conf::addCurrentType("early");
    Conf::addCurrentMode("Eth");
    Conf::addCurrentType("rfc");
    EXPECT_FALSE(Conf::addTypeToMode("rfc", "SDH"));
    Conf::addCurrentMode("SDH");
    Conf::addCurrentMode("Eth");
    Conf::addCurrentType("early");
    EXPECT_EQ((Names{"Eth", "SDH"}), listFrom(Conf::getCurrentMode));
    EXPECT_TRUE(Conf::addTypeToMode("BERT", "Eth"));
    EXPECT_FALSE(Conf::addTypeToMode("BERT", "Eth"));
    EXPECT_EQ((Names{"rfc", "early", "BERT"}), listFrom(Conf::getTypeByModeName, "Eth"));
    EXPECT_EQ((Names{"early"}), listFrom(Conf::getTypeByModeName, ""));
    Names replaced{"old"};
    Conf::getTypeByModeName(replaced, "SDH");
    EXPECT_TRUE(replaced.empty());
    EXPECT_FALSE(Conf::addTypeToMode("BERT", "SDH"));
    // clearCurrentAll keeps modules and the types of modes.
    Conf::addCurrentPort("p");
    Conf::addCurrentModule("M");
    Conf::clearCurrentAll();
    Conf::addCurrentType("late");
    EXPECT_EQ((Names{"late"}), listFrom(Conf::getCurrentTypeNames));
    EXPECT_TRUE(listFrom(Conf::getCurrentMode).empty() && listFrom(Conf::getCurrentPort).empty());
    EXPECT_EQ((Names{"M"}), listFrom(Conf::getCurrentModule));
    EXPECT_EQ((Names{"rfc", "early", "BERT", "late"}), listFrom(Conf::getTypeByModeName, "Eth"));
}

TEST_F(Vocabulary, OnlyTheTypesOf40GeMergeAndOnlyForTheCaller) {
    ScanModuleToModeInfo first{{"p"}, {"r"}, {{"OTU3", {}}}};
    Conf::addScanModuleInfo("40GE", first);
    for (const std::string module : {"40ge", "10GE", "40GE"}) {
        const bool merges = module != "10GE";
        ScanModuleToModeInfo second{{"x", "p"}, {"y"}, {{"Eth", {}}}};
        Conf::addScanModuleInfo(module, second);
        EXPECT_EQ((Names{"x", "p"}), second.profTypes) << module;
        EXPECT_EQ((merges ? Names{"y", "r"} : Names{"y"}), second.rsltTypes) << module;
        EXPECT_EQ(1u, second.modes.count("Eth") + second.modes.count("OTU3")) << module;
    }
    EXPECT_EQ((Names{"p"}), Conf::getScanModuleInfo().at("40GE").profTypes);
    EXPECT_EQ(3u, Conf::getScanModuleInfo().size());
}

TEST_F(Vocabulary, CheckedNamesAreThoseFoundOnDisk) {
    Conf::addCurrentMode("Eth");
    Conf::addCurrentType("RFC");
    Conf::addCurrentType("rfc");
    Conf::addCurrentPort("P1");
    Conf::addCurrentModule("B");
    EXPECT_EQ((Names{"Eth"}), listFrom(Conf::getCheckedModes));
    EXPECT_EQ((Names{"RFC"}), listFrom(Conf::getCheckedTypeNames));
    EXPECT_EQ((Names{"rfc6349"}), listFrom(Conf::getCheckedTypeKeys));
    EXPECT_EQ((Names{}), listFrom(Conf::getCheckedPorts));
    EXPECT_EQ((Names{"B"}), listFrom(Conf::getCheckedModules));
    EXPECT_TRUE(Conf::isTypeChecked("rfc") && Conf::isTypeChecked("bert"));
    EXPECT_FALSE(Conf::isTypeChecked("rfc2544"));
    EXPECT_TRUE(Conf::isChecked("true"));
    EXPECT_FALSE(Conf::isChecked("True") || Conf::isChecked("true ") || Conf::isChecked(""));
}

TEST_F(Vocabulary, ClassesAndTheExchangedSlotsOfTypesAndPorts) {
    readSections("<class><e name='c' checked='true'/></class>");
    EXPECT_EQ(1u, Conf::getClassesInfo().count("c"));
    const std::pair<std::size_t, Conf::FilterType> rows[] = {{0, Conf::FT_MODULE},
                                                             {1, Conf::FT_MODE},
                                                             {3, Conf::FT_TYPE},
                                                             {2, Conf::FT_PORT},
                                                             {4, Conf::FT_CLASS}};
    for (const auto& [slot, type] : rows) {
        confState().s_allChecked = {};
        EXPECT_FALSE(Conf::getAllChecked(type));
        confState().s_allChecked[slot] = true;
        EXPECT_TRUE(Conf::getAllChecked(type)) << slot;
    }
}

TEST_F(FilesTest, DumpNumbersTheItems) {
    testing::internal::CaptureStdout();
    Conf::dump("types", {"bert", ""});
    EXPECT_EQ("types\ndump start............................\ntotal:2\nindex: 1----bert\nindex: 2----\n"
              "dump end..............................\n",
              testing::internal::GetCapturedStdout());
}

TEST_F(FilesTest, StoredInformationOfAFile) {
    // Job, account, locator, type, prefix, suffix, and whether any of them restricts.
    const std::pair<const char*, const char*> rows[] = {
        {"<r><ktb_advinfo job_id='j' account_id='a' locator='l' advtype='t' prefix='p' suffix='s'/></r>",
         "j a l t p s 1"},
        {"<r><ktb_advinfo locator='none' advtype='NONE'/></r>", "  none NONE   0"},
        {"<r><ktb_advinfo suffix='s'/></r>", "     s 1"},
    };
    for (const auto& [document, expected] : rows) {
        const _AdvanceInfo info = Conf::getAdvInfo(_AdvanceInfo(), write(document));
        EXPECT_EQ(expected, info.jobId + " " + info.account + " " + info.locator + " " + info.type + " " +
                                info.prefix + " " + info.suffix + (info.hasAdvance ? " 1" : " 0"));
    }
    _AdvanceInfo given;
    given.jobId = "kept";
    given.hasAdvance = true;
    for (const std::string& path : {std::string(), at("missing"), at("")}) {
        EXPECT_EQ("kept", Conf::getAdvInfo(given, path).jobId);
        EXPECT_FALSE(Conf::getAdvInfo(given, path).hasAdvance);
    }
}

TEST_F(FilesTest, StoredInformationIsReadWithinABudget) {
    const std::string document = "<r><ktb_advinfo job_id='j'/></r>";
    const std::string limit(1024 * 1024 - document.size(), ' ');
    EXPECT_EQ("j", Conf::getAdvInfo({}, write(document + limit)).jobId);
    EXPECT_EQ("", Conf::getAdvInfo({}, write(document + limit + " ")).jobId);

    // 100,000 normal files do not use up the budget.
    const std::string honest = document + std::string(4000, ' ') + "<x a='' b='' c=''/>";
    const std::string path = write(document);
    CompanionBudget budget;
    testing::internal::CaptureStderr();
    const std::size_t cost = honest.size() / 8 + xml::parseCost(honest);
    for (int i = 0; i < 100000; ++i)
        ASSERT_TRUE(budget.spend(cost, path));
    EXPECT_EQ("j", Conf::getAdvInfo({}, path, budget).jobId);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    testing::internal::CaptureStderr();
    while (budget.spend(10'000'000, path))
        continue;
    EXPECT_EQ("", Conf::getAdvInfo({}, path, budget).jobId);
    EXPECT_EQ("fileman: read document " + path +
                  ": too much to read for one request, this and what follows counts as empty\n",
              testing::internal::GetCapturedStderr());
}

} // namespace
