#include <sys/stat.h>
#include <tinyxml.h>

#include "TestFiles.h"
#include "conf/xml/DocumentUpdate.h"
#include "conf/xml/XmlFile.h"
#include "conf/xml/XmlLimits.h"

namespace {

using Conf = CFileManConf;

// Of two records with one key the first stays, of two halves of one kind the second, with the list of both.
TEST_F(FilesTest, SectionsHaveExactNamesAndTheFirstRecordStays) {
    ASSERT_TRUE(readConf(R"(
        <r>
          <other/>
          <FILTER>
            <class><e name='c' checked='true'/> <e name='C' checked='TRUE'/></class>
            <Class><e name='no' checked='true'/></Class>
            <mode><e name='m' label='first'/> <x name='m' label='later'/></mode>
            <port><e label='pl' name='p' key='k' dir='d' prof_suffix='-p' rslt_suffix='-r'/></port>
            <extraDir><e test_name='RESULT'/> <e test_name='other'/></extraDir>
            <unknown><e name='z'/></unknown>
            <mode><e name='m2'/></mode>
            <module>
              <m name='10G' checked='true'>
                <o mode_name='E'>
                  <h test_name='rESULT' dir_name='r1' under_port_dir='true' list='a,,b,'/>
                  <h test_name='Result' dir_name='r2' under_port_dir='yes' list='c'/>
                  <h test_name='Setup' dir_name='no' list='no'/>
                </o>
                <o mode_name='E'><h test_name='Profile' list='no'/></o>
              </m>
              <m name='coMMon'>
                <e test_name='Result' key='k'/> <e test_name='Result' key='later'/>
                <e test_name='Screen' key='screen'/>
              </m>
            </module>
          </FILTER>
          <filter><mode><e name='no'/></mode></filter>
        </r>)"));
    EXPECT_EQ((Names{"c"}), listFrom(Conf::getCheckedClasses));
    EXPECT_EQ((Names{"m", "m2"}), listFrom(Conf::getAllModeNames));
    EXPECT_EQ("first", Conf::getModeInfo("m").label);
    const _PortInfo& port = Conf::getPortInfo("p");
    EXPECT_EQ("pl p k d -r -p", port.label + " " + port.name + " " + port.key + " " + port.dir + " " +
                                    port.rslt_suffix + " " + port.prof_suffix);
    ASSERT_EQ(2u, Conf::getExtraDirList().size());
    EXPECT_TRUE(Conf::getExtraDirList().front().isResult && !Conf::getExtraDirList().back().isResult);
    const ModeOptInfo& option = Conf::getModuleInfo("10G").modeOpts.at("E");
    EXPECT_EQ("r2", option.rslt_dir_name);
    EXPECT_FALSE(option.rslt_under_port_dir);
    EXPECT_EQ((Names{"a", "", "b", "c"}), option.rslt_list);
    EXPECT_TRUE(option.prof_dir_name.empty() && option.prof_list.empty() && !option.prof_under_port_dir);
    EXPECT_TRUE(Conf::getModuleInfo("coMMon").modeOpts.empty());
    ASSERT_EQ(2u, Conf::getCommonModuleInfo().size());
    EXPECT_EQ("k", Conf::getCommonModuleInfo().at("Result").key);
    EXPECT_THROW(Conf::getModeInfo("M"), std::out_of_range);
}

TEST_F(FilesTest, UnusableDocumentsDoNotChangeTheVocabulary) {
    ASSERT_TRUE(readSections("<mode><e name='kept'/></mode>"));
    EXPECT_FALSE(readConf("<r><filter><mode><e name='partial'/></mode></filter>"));
    for (const bool isKept : {false, true})
        EXPECT_EQ(isKept, Conf::loadConf(at("missing"))) << "a kept document is not loaded again";
    ASSERT_TRUE(readSections("<mode><e name='kept' label='later'/><e name='new'/></mode>"));
    EXPECT_EQ("", Conf::modeName2Label("kept"));
    EXPECT_EQ((Names{"kept", "new"}), listFrom(Conf::getAllModeNames));
    resetConfState();
    EXPECT_TRUE(listFrom(Conf::getAllModeNames).empty() && g_pXmlDoc == nullptr);
    EXPECT_TRUE(Conf::loadConf(write("<!-- none -->"))) << "a document needs no root to be kept";
}

std::string repeated(int times, const std::string& part) {
    std::string text;
    for (int i = 0; i < times; ++i)
        text += part;
    return text;
}

TEST_F(FilesTest, LimitsHoldWhereTheParserSeesTags) {
    const std::string utf8 = "<?xml version='1.0'?>";
    const std::string latin = "<?xml version='1.0' encoding='latin1'?>";
    const std::string deep = repeated(128, "<x>") + repeated(128, "</x>");
    const std::string in[] = {deep, "<r>" + repeated(300, "<x/><!--<x>--><![CDATA[<x>]]>") + "</r>",
                              latin + "<r>" + repeated(300, "<x a=\"caf\xE9\">\xC3</x>") + "</r>"};
    const std::string out[] = {"<r>" + deep + "</r>",
                               // Texts that hide tags from the parser must not let it recurse.
                               utf8 + repeated(60000, "<x>\xC3</x>"), repeated(60000, "<x>&#x</x>x41;"),
                               utf8 + "<a b=\"\xC3\" c=\">" + repeated(60000, "<x>") + "\">"};
    for (const std::string& text : in)
        EXPECT_NE(nullptr, xml::load(write(text))) << text.substr(0, 60);
    for (const std::string& text : out)
        EXPECT_EQ(nullptr, xml::load(write(text))) << text.substr(0, 60);
}

// Everything that costs memory or time counts, in any place. Each row has about the largest number that
// passes.
TEST(Limits, DocumentsThatNeedTooMuchMemoryDoNotReachTheParser) {
    const std::pair<const char*, int> rows[] = {
        {"<x/>", 90000}, {"<x></x>", 45000}, {"<!---->", 88000},        {"<![CDATA[]]>", 86000},
        {"<!>", 90000},  {",", 225000},      {"<x a='' b=''/>", 49000}, {"&", 3000000}};
    for (const auto& [part, most] : rows) {
        SCOPED_TRACE(part);
        EXPECT_EQ("", xml::passedLimit("<r>" + repeated(most, part) + "</r>"));
        EXPECT_EQ("it needs too much memory",
                  xml::passedLimit("<r>" + repeated(most / 20 * 21, part) + "</r>"));
    }
}

constexpr char kForeign[] =
    "\xEF\xBB\xBF<?xml version=\"1.0\" encoding='utf-8' standalone=\"yes\"?>\r\n"
    "<?xml-stylesheet href=\"a.css\"?>\n<?php echo 1 ?>\n<!DOCTYPE config SYSTEM \"x.dtd\">\n<!-- before "
    "-->\n"
    "<config\ta='say \"hi\"' b=\"&#x20AC;&nbsp;\">\n  text   with &amp; &copy;\n blanks\r\n"
    "<![CDATA[ <raw a='1'/> <c name='A'/> ]]>\n"
    "<filter><class><c z='1' name=\"A\" new=x/></class>  <!-- <c name='A'/> --></filter></config>\n"
    "<!-- behind -->\n\n";

TEST_F(FilesTest, SavingChangesNothingButTheValues) {
    std::string text = kForeign;
    DocumentUpdate edit(write(text));
    ASSERT_NE(nullptr, edit.document());
    EXPECT_TRUE(edit.save());
    EXPECT_EQ(text, readFile(at("file")));
    TiXmlElement* const entry =
        edit.document()->RootElement()->FirstChildElement()->FirstChildElement()->FirstChildElement();
    entry->SetAttribute("name", "<&#x41;\"'\n\xC3\xA9>");
    entry->SetAttribute("checked", "true");
    EXPECT_TRUE(edit.save());
    text.replace(text.find("\"A\" new=x"), 9,
                 "\"&lt;&amp;#x41;&quot;'&#x0A;\xC3\xA9&gt;\" new=x checked=\"true\"");
    EXPECT_EQ(text, readFile(at("file")));
    // No strict parser accepts these values in any form.
    for (const std::string broken : {"caf\xC3", "\xE9t\xE9", "\x1B[0m", "\xED\xA0\x80", "\xEF\xBF\xBF"}) {
        entry->SetAttribute("name", broken);
        EXPECT_FALSE(edit.save()) << broken;
        EXPECT_EQ(text, readFile(at("file")));
    }
    entry->SetAttribute("name", "\t\r\xF0\x9F\x93\xA1\xEF\xBF\xBD");
    EXPECT_TRUE(edit.save());
    write("<config/>");
    EXPECT_FALSE(edit.save()) << "changed by a writer that does not lock";
    EXPECT_EQ("<config/>", readFile(at("file")));
}

TEST_F(FilesTest, NewValuesFollowTheEncodingOfTheDocument) {
    const std::pair<const char*, bool> rows[] = {{"<r/>", false},
                                                 {"<?xml version='1.0'?><r/>", false},
                                                 {"<?xml version='1.0' encoding='utf-8'?><r/>", false},
                                                 {"<?xml version='1.0' encoding='ISO-8859-1'?><r/>", true}};
    for (const auto& [document, mayHold] : rows) {
        DocumentUpdate edit(write(document));
        edit.document()->RootElement()->SetAttribute("name", "caf\xE9");
        EXPECT_EQ(mayHold, edit.save()) << document;
    }
}

// If the parser stops before the root, a save must not report success.
TEST_F(FilesTest, DocumentWithoutAVisibleRootIsNotOpened) {
    for (const char* const document :
         {"<!DOCTYPE r [ <!ELEMENT r ANY> ]><r/>", "<?php if (a > b) ?><r/>", "<!-- none -->", "text <r/>"})
        EXPECT_EQ(nullptr, DocumentUpdate(write(document)).document()) << document;
    EXPECT_NE(nullptr, DocumentUpdate(write("<!DOCTYPE r><?a b?><r/>")).document());
}

} // namespace
