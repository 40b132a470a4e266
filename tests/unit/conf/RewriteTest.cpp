#include <sys/wait.h>
#include <unistd.h>

#include "StorageFixture.h"

namespace {

using Conf = CFileManConf;

// The marks are in the first element of the root, which may have any name. Unknown elements must stay.
constexpr char kDocument[] = R"(<?xml version="1.0"?>
<!-- kept -->
<config>
 <first unknown="&#x41;"> <?kept?>
  <Class><e name="c1" checked="true"/><e  NAME='x' name='C1'/></Class>
  <class><e name="c1" checked="false" /></class>
  <mode><e checked="false" name="m1"/></mode>
  <category><e name="RFC" key="a" checked="true"/><e name="rfc" key="b" checked="true"/></category>
  <port><e name="p1" checked="true"/></port>
  <module><e name="M" checked="true"/></module>
  <AdvInfo jobid="J" account="A" name="N" prefix="P" suffix="S">
   <locator><e name="L1" checked="true"/><e name="" checked="true"/><e name="None"/><e name="L1"/></locator>
   <type><e name="T1" checked="true"/><e name="T2" checked="true"/></type><Type><e name="T3"/></Type></AdvInfo>
 </first>
 <filter><class><e name="c1" checked="true"/></class><mode><e name="m1"/></mode><category><e name="RFC" key="a"/>
 <e name="rfc" key="b"/></category><port><e name="p1"/></port></filter>
</config>
)";

class Document : public PreparedStorage {
protected:
    Document() { start(); }

    static void start() {
        reset();
        writeFile(Conf::getConfFileName(), kDocument);
        Conf::readConf(Conf::getConfFileName());
        for (const char* const name : {"m1", "RFC", "rfc", "p1"}) {
            Conf::addCurrentMode(name);
            Conf::addCurrentType(name);
            Conf::addCurrentPort(name);
        }
    }

    // Returns the document after these changes, each made once, from the top.
    static std::string changed(std::initializer_list<std::pair<const char*, const char*>> changes) {
        std::string text = kDocument;
        std::size_t from = 0;
        for (const auto& [before, after] : changes) {
            from = text.find(before, from);
            text.replace(from, std::string(before).size(), after);
            from += std::string(after).size();
        }
        return text;
    }
    static std::string onDisk() { return readFile(Conf::getConfFileName()); }
    static std::string inMemory() {
        return joined(listFrom(Conf::getCheckedClasses)) + " " + joined(listFrom(Conf::getCheckedModes)) +
               " " + joined(listFrom(Conf::getCheckedTypeKeys)) + " " +
               joined(listFrom(Conf::getCheckedPorts));
    }
};

TEST_F(Document, MarksOfOneNameChangeInMemoryAndOnDisk) {
    ASSERT_EQ("c1 - - -", inMemory());
    const std::tuple<Conf::FilterType, const char*, bool, const char*, std::string> rows[] = {
        // In memory the key must be exact; on disk the name may have any case. Of the types the first
        // changes.
        {Conf::FT_CLASS, "C1", false, "c1 - - -",
         changed({{"\"true\"", "\"false\""}, {"'C1'", "'C1' checked=\"false\""}})},
        {Conf::FT_MODE, "m1", true, "c1 m1 - -", changed({{"false\" name=\"m1", "true\" name=\"m1"}})},
        {Conf::FT_TYPE, "rfc", true, "c1 - a -", kDocument},
        {Conf::FT_TYPE, "Rfc", true, "c1 - - -", kDocument},
        {Conf::FT_TYPE, "Rfc", false, "c1 - - -",
         changed({{"\"a\" checked=\"true", "\"a\" checked=\"false"}, {"\"true", "\"false"}})},
        {Conf::FT_PORT, "p1", true, "c1 - - p1", kDocument},
        {Conf::FT_PORT, "none", true, "c1 - - -", kDocument},
        {Conf::FT_MODULE, "M", false, "c1 - - -", kDocument},
    };
    for (const auto& [type, name, state, memory, document] : rows) {
        start();
        EXPECT_TRUE(Conf::setFilterChecked(type, name, state));
        EXPECT_EQ(memory, inMemory()) << name;
        EXPECT_EQ(document, onDisk()) << name;
    }
    for (const int type : {-1, 5})
        EXPECT_FALSE(Conf::setFilterChecked(static_cast<Conf::FilterType>(type), "c1", false));
}

TEST_F(Document, AllMarksChangeExceptThoseOfModules) {
    EXPECT_TRUE(Conf::setAllFilterChecked(true));
    EXPECT_EQ("c1 m1 a,b p1", inMemory());
    EXPECT_EQ(changed({{"'C1'", "'C1' checked=\"true\""}, {"false", "true"}, {"false", "true"}}), onDisk());
    EXPECT_TRUE(Conf::setAllFilterChecked(false));
    EXPECT_EQ("- - - -", inMemory());
    EXPECT_NE(std::string::npos, onDisk().find("<module><e name=\"M\" checked=\"true\"/>"));
}

TEST_F(Document, AdvancedStateIsReadAndWritten) {
    _AdvanceInfo info;
    info.locatorList = {"given"};
    Conf::getAdvanceInfo(info);
    EXPECT_EQ("J A N P S L1 T2", info.jobId + " " + info.account + " " + info.fileName + " " + info.prefix +
                                     " " + info.suffix + " " + info.locator + " " + info.type);
    EXPECT_EQ((Names{"given", "L1", "None"}), info.locatorList);
    EXPECT_EQ((Names{"T1", "T2", "T3"}), info.typeList);
    EXPECT_TRUE(info.hasAdvance);
    info.jobId = "\"<J>&";
    info.account = "caf\xC3\xA9";
    info.prefix = "Q";
    info.locator = "none";
    info.type = "t3";
    info.suffix.clear();
    EXPECT_EQ(1, Conf::saveAdvanceInfo(info));
    EXPECT_EQ(changed({{"\"J\"", "\"&quot;&lt;J&gt;&amp;\""},
                       {"account=\"A\"", "account=\"caf\xC3\xA9\""},
                       {"prefix=\"P\"", "prefix=\"Q\""},
                       {"suffix=\"S\"", "suffix=\"\""},
                       {"\"true\"", "\"false\""},
                       {"\"true\"", "\"false\""},
                       {"\"None\"", "\"None\" checked=\"true\""},
                       {"\"L1\"", "\"L1\" checked=\"false\""},
                       {"\"true\"", "\"false\""},
                       {"\"true\"", "\"false\""},
                       {"\"T3\"", "\"T3\" checked=\"true\""}}),
              onDisk());
    const std::string saved = onDisk();
    info.fileName = "\x07";
    EXPECT_EQ(0, Conf::saveAdvanceInfo(info));
    EXPECT_EQ(saved, onDisk());
}

// Each process changes its own mark, and later finds it unchanged although many others write.
TEST_F(Document, WritersDoNotLoseEachOthersChanges) {
    constexpr int kWriters = 8, kChanges = 12;
    std::string ports;
    for (int i = 0; i < kWriters; ++i)
        ports += "<e name='p" + std::to_string(i) + "' checked='true'/>\n";
    writeFile(Conf::getConfFileName(), "<c><filter><port>" + ports + "</port></filter></c>");
    for (int i = 0; i < kWriters; ++i) {
        if (::fork() != 0)
            continue;
        const std::string name = "p" + std::to_string(i);
        bool isKept = true;
        for (int change = 0; change < kChanges && isKept; ++change) {
            const bool state = change % 2 != 0;
            const std::string mark = "name='" + name + "' checked=\"" + Conf::checkState2Str(state);
            isKept = Conf::setFilterChecked(Conf::FT_PORT, name, state);
            for (int look = 0; look < 20; ++look)
                isKept = isKept && onDisk().find(mark) != std::string::npos;
        }
        std::_Exit(isKept ? 0 : 1);
    }
    int status = 0, failures = 0;
    while (::wait(&status) > 0)
        failures += status != 0;
    EXPECT_EQ(0, failures);
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(Conf::getConfPath()), {}));
}

TEST_F(Document, UnusableDocumentIsReportedAndNotWritten) {
    for (const char* const text : std::initializer_list<const char*>{"<config><first>", "", nullptr}) {
        if (text == nullptr)
            std::filesystem::remove(Conf::getConfFileName());
        else
            writeFile(Conf::getConfFileName(), text);
        EXPECT_FALSE(Conf::setAllFilterChecked(true));
        EXPECT_EQ("c1 - - -", inMemory());
        EXPECT_FALSE(Conf::setFilterChecked(Conf::FT_MODE, "m1", false));
        EXPECT_EQ(0, Conf::saveAdvanceInfo({}));
        _AdvanceInfo info;
        info.hasAdvance = true;
        info.jobId = "kept";
        Conf::getAdvanceInfo(info);
        EXPECT_FALSE(info.hasAdvance);
        EXPECT_EQ("kept", info.jobId);
        EXPECT_EQ(text == nullptr ? "" : text, onDisk());
    }
    EXPECT_FALSE(std::filesystem::exists(Conf::getConfFileName()));
}

TEST_F(Document, RewritingKeepsModeAndLink) {
    const std::string target = "/home/elsewhere.xml";
    std::filesystem::rename(Conf::getConfFileName(), target);
    std::filesystem::permissions(target, std::filesystem::perms(0640));
    std::filesystem::create_symlink("../elsewhere.xml", Conf::getConfFileName());
    EXPECT_TRUE(Conf::setFilterChecked(Conf::FT_CLASS, "c1", false));
    EXPECT_TRUE(std::filesystem::is_symlink(Conf::getConfFileName()));
    EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(target).permissions());
    EXPECT_NE(kDocument, readFile(target));
    EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator("/home"), {}));
}

} // namespace
