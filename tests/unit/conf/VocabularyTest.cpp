#include "TestFiles.h"
#include "conf/CompanionLimits.h"
#include "conf/xml/XmlLimits.h"

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
        <module><e name='B' checked='true'/> <e name='A' checked='true'/></module>)");
    }
};

TEST_F(Vocabulary, LookupsTakeTheFirstMatchInAnyCase) {
    const std::tuple<std::string (*)(const std::string&), const char*, const char*> rows[] = {
        {Conf::getModeName, "e-PROF", "Eth"},   {Conf::getModeName, "S-rslt", "SDH"},
        {Conf::getModeName, "ktr", "Eth"},      {Conf::getModeName, "KTR", ""},
        {Conf::getTypeName, "RFC2544", "rfc"},  {Conf::getTypeName, "", ""},
        {Conf::getPortName, "GE", "P1"},        {Conf::getPortName, "P1", ""},
        {Conf::modeName2Label, "sdh", "L"},     {Conf::typeKey2Label, "RFC6349", "R"},
        {Conf::portName2Label, "p2", "Port 2"}, {Conf::modeLabel2ModeName, "L", "Eth"},
        {Conf::typeLabel2Key, "R", "rfc2544"},  {Conf::getVerNum, "1.0", ""}};
    for (const auto& [lookUp, text, expected] : rows)
        EXPECT_EQ(expected, lookUp(text)) << text;
    // The exchanged labels have priority over the document.
    const std::tuple<std::string (*)(const std::string&, bool), const char*, const char*, const char*>
        dirs[] = {{Conf::modeLabel2DirName, "L", "e-rslt", "E-prof"},
                  {Conf::typeLabel2DirName, "R", "rfc2544-result", "rfc2544-setup"},
                  {Conf::typeLabel2DirName, "x", "", ""},
                  {Conf::portLabel2DirName, "PORT 2", "ge2port", "ge2port"},
                  {Conf::portLabel2DirName, "10ge m1", "10gport2", "10gport2"},
                  {Conf::portLabel2DirName, "10GE M2", "10gport", "10gport"}};
    for (const auto& [dirOf, label, result, profile] : dirs) {
        EXPECT_EQ(result, dirOf(label, true)) << label;
        EXPECT_EQ(profile, dirOf(label, false)) << label;
    }
    // Entries that are read later may be the first in key order.
    readSections("<mode><e name='A' prof_dir_name='Both'/><e name='B' rslt_dir_name='both'/></mode>"
                 "<category><e name='new' label='R' key='A'/></category>");
    EXPECT_EQ("A", Conf::getModeName("BOTH"));
    EXPECT_EQ("A", Conf::typeLabel2Key("r"));
}

TEST_F(Vocabulary, DirectoryNames) {
    const std::pair<std::string, const char*> rows[] = {
        {Conf::str2Port("geport"), "P1"},     {Conf::str2Port("geXXXr"), "P1"},
        {Conf::str2Port("ge"), "P1"},         {Conf::str2Port("tge"), ""},
        {Conf::str2Port("ge2port", 4), "P2"}, {Conf::str2Port("ge", -1), "P1"},
        {Conf::str2Port("ge", 3), ""},        {Conf::str2Port(""), "Unknown"},
        {Conf::str2Port("", 1), "Unknown"},   {Conf::str2Type("a-setup", 6), "a"},
        {Conf::str2Type("a", 2), ""},         {Conf::str2Type("a", -1), "a"},
        {Conf::str2Type("", 0), "Unknown"}};
    for (const auto& [found, expected] : rows)
        EXPECT_EQ(expected, found);
}

TEST_F(Vocabulary, ListsAreAppendedToOrReplaced) {
    EXPECT_EQ((Names{"BERT", "rfc", "RFC"}), listFrom(Conf::getAllTypeNames));
    EXPECT_EQ((Names{"P1", "P2"}), listFrom(Conf::getAllPortNames));
    EXPECT_EQ((Names{"A", "B"}), listFrom(Conf::getAllModuleNames));
    EXPECT_EQ((Names{"rfc2544", "rfc6349"}), listFrom(Conf::getTypeKeys, "Rfc"));
    for (const char* const name : {"RFC", "BERT", "RFC"})
        Conf::addCurrentType(name);
    for (const auto& append : {Conf::getAllTypeKeys, Conf::getCurrentTypeKeys}) {
        Names out{"kept", "bert"};
        append(out);
        EXPECT_EQ((Names{"kept", "bert", "rfc2544", "rfc6349"}), out);
        Conf::getCurrentTypeNames(out);
        EXPECT_EQ((Names{"RFC", "BERT"}), out);
    }
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
    EXPECT_TRUE(Conf::addTypeToMode("BERT", "Eth") && !Conf::addTypeToMode("BERT", "Eth"));
    EXPECT_EQ((Names{"early"}), listFrom(Conf::getTypeByModeName, ""));
    Names replaced{"old"};
    Conf::getTypeByModeName(replaced, "SDH");
    EXPECT_TRUE(replaced.empty());
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
    ScanModuleToModeInfo first{{"p"}, {"r"}, {}};
    Conf::addScanModuleInfo("40GE", first);
    for (const std::string module : {"40ge", "10GE", "40GE"}) {
        const bool merges = module != "10GE";
        ScanModuleToModeInfo second{{"x", "p"}, {"y"}, {}};
        Conf::addScanModuleInfo(module, second);
        EXPECT_EQ((Names{"x", "p"}), second.profTypes) << module;
        EXPECT_EQ((merges ? Names{"y", "r"} : Names{"y"}), second.rsltTypes) << module;
    }
    EXPECT_EQ((Names{"p"}), Conf::getScanModuleInfo().at("40GE").profTypes);
    EXPECT_EQ(3u, Conf::getScanModuleInfo().size());
}

TEST_F(Vocabulary, CheckedNamesAreThoseFoundOnDisk) {
    Conf::addCurrentType("RFC");
    Conf::addCurrentType("rfc");
    Conf::addCurrentModule("B");
    EXPECT_EQ((Names{"RFC"}), listFrom(Conf::getCheckedTypeNames));
    EXPECT_EQ((Names{"B"}), listFrom(Conf::getCheckedModules));
    EXPECT_TRUE(Conf::isTypeChecked("rfc") && Conf::isTypeChecked("bert"));
    EXPECT_FALSE(Conf::isTypeChecked("rfc2544") || Conf::isChecked("True") || Conf::isChecked("true "));
}

TEST_F(Vocabulary, SlotsOfTypesAndPortsAreExchanged) {
    confState().s_allChecked = {false, false, true, false, false};
    EXPECT_TRUE(Conf::getAllChecked(Conf::FT_PORT) && !Conf::getAllChecked(Conf::FT_TYPE));
    confState().s_allChecked = {false, true, false, true, false};
    EXPECT_TRUE(Conf::getAllChecked(Conf::FT_TYPE) && Conf::getAllChecked(Conf::FT_MODE));
    EXPECT_FALSE(Conf::getAllChecked(Conf::FT_MODULE) || Conf::getAllChecked(Conf::FT_CLASS));
}

TEST_F(FilesTest, StoredInformationOfAFile) {
    const _AdvanceInfo info =
        Conf::getAdvInfo({}, write("<r><ktb_advinfo job_id='j' account_id='a' locator='l' "
                                   "advtype='t' prefix='p' suffix='s'/></r>"));
    EXPECT_EQ("jaltps", info.jobId + info.account + info.locator + info.type + info.prefix + info.suffix);
    EXPECT_TRUE(info.hasAdvance);
}

TEST_F(FilesTest, StoredInformationIsReadWithinABudget) {
    const std::string document = "<r><ktb_advinfo job_id='j'/></r>";
    const std::string limit(1024 * 1024 - document.size(), ' ');
    EXPECT_EQ("j", Conf::getAdvInfo({}, write(document + limit)).jobId);
    EXPECT_EQ("", Conf::getAdvInfo({}, write(document + limit + " ")).jobId);

    // 100,000 normal files do not use up the budget.
    const std::string honest = document + std::string(4000, ' ') + "<x a='' b='' c=''/>";
    const std::size_t cost = honest.size() / 8 + xml::parseCost(honest);
    const std::string path = write(document);
    CompanionBudget budget;
    for (int i = 0; i < 100000; ++i)
        ASSERT_TRUE(budget.spend(cost, path));
    EXPECT_EQ("j", Conf::getAdvInfo({}, path, budget).jobId);
    testing::internal::CaptureStderr();
    while (budget.spend(10'000'000, path))
        continue;
    EXPECT_EQ("", Conf::getAdvInfo({}, path, budget).jobId);
    EXPECT_EQ("fileman: read document " + path +
                  ": too much to read for one request, this and what follows counts as empty\n",
              testing::internal::GetCapturedStderr());
}

} // namespace
