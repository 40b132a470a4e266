#include <sys/wait.h>
#include <unistd.h>

#include <sstream>

#include "StorageFixture.h"

namespace {

using Conf = CFileManConf;

// The marks are in the first element of the root, which may have any name. Unknown elements must stay.
const std::string kDocument = readFile("tests/unit/conf/marks.xml");

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

    // The lines of the document that have changed.
    static std::string changedLines() {
        std::istringstream before(kDocument), after(onDisk());
        std::string lines, old, now;
        while (std::getline(before, old)) {
            std::getline(after, now);
            lines += old == now ? "" : now + "\n";
        }
        return lines;
    }
    static std::string onDisk() { return readFile(Conf::getConfFileName()); }
    static std::string inMemory() {
        return joined(listFrom(Conf::getCheckedClasses)) + " " + joined(listFrom(Conf::getCheckedModes)) +
               " " + joined(listFrom(Conf::getCheckedTypeKeys)) + " " +
               joined(listFrom(Conf::getCheckedPorts));
    }
};

// In memory the key must be exact; on disk the name may have any case. Of the types the first changes.
TEST_F(Document, MarksOfOneNameChangeInMemoryAndOnDisk) {
    const std::tuple<Conf::FilterType, const char*, bool, const char*, const char*> rows[] = {
        {Conf::FT_CLASS, "C1", false, "c1 - - -",
         R"(  <Class><e name="c1" checked="false"/><e  NAME='x' name='C1' checked="false"/></Class>)"},
        {Conf::FT_MODE, "m1", true, "c1 m1 - -", R"(  <mode><e checked="true" name="m1"/></mode>)"},
        {Conf::FT_TYPE, "rfc", true, "c1 - a -", ""},
        {Conf::FT_TYPE, "Rfc", true, "c1 - - -", ""},
        {Conf::FT_TYPE, "Rfc", false, "c1 - - -",
         R"(  <category><e name="RFC" key="a" checked="false"/></category>
  <category><e name="rfc" key="b" checked="false"/></category>)"},
        {Conf::FT_PORT, "p1", true, "c1 - - p1", ""},
        {Conf::FT_MODULE, "M", false, "c1 - - -", ""}};
    for (const auto& [type, name, state, memory, lines] : rows) {
        start();
        EXPECT_TRUE(Conf::setFilterChecked(type, name, state));
        EXPECT_EQ(memory, inMemory()) << name;
        EXPECT_EQ(*lines == 0 ? "" : std::string(lines) + "\n", changedLines()) << name;
    }
    for (const int type : {-1, 5})
        EXPECT_FALSE(Conf::setFilterChecked(static_cast<Conf::FilterType>(type), "c1", false));
}

TEST_F(Document, AllMarksChangeExceptThoseOfModules) {
    EXPECT_TRUE(Conf::setAllFilterChecked(true));
    EXPECT_EQ("c1 m1 a,b p1", inMemory());
    EXPECT_TRUE(Conf::setAllFilterChecked(false));
    EXPECT_EQ("- - - -", inMemory());
    EXPECT_EQ(R"(  <Class><e name="c1" checked="false"/><e  NAME='x' name='C1' checked="false"/></Class>
  <category><e name="RFC" key="a" checked="false"/></category>
  <category><e name="rfc" key="b" checked="false"/></category>
  <port><e name="p1" checked="false"/></port>
)",
              changedLines());
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
    info.jobId = "<J>";
    info.account = "caf\xC3\xA9";
    info.prefix = "Q";
    info.suffix.clear();
    info.locator = "none";
    info.type = "t3";
    EXPECT_EQ(1, Conf::saveAdvanceInfo(info));
    const std::string saved = onDisk();
    EXPECT_EQ(R"(  <AdvInfo jobid="&lt;J&gt;" account="café" name="N" prefix="Q" suffix="">
   <locator><e name="L1" checked="false"/><e name="" checked="false"/></locator>
   <locator><e name="None" checked="true"/></locator>
   <type><e name="T1" checked="false"/><e name="T2" checked="false"/></type>
   <Type><e name="T3" checked="true"/><e name="T1" checked="false"/></Type>
)",
              changedLines());
    info.fileName = "\x07";
    EXPECT_EQ(0, Conf::saveAdvanceInfo(info));
    EXPECT_EQ(saved, onDisk());
}

// Each process changes its own mark, and later finds it unchanged although many others write.
TEST_F(Document, WritersDoNotLoseEachOthersChanges) {
    std::string ports;
    for (const char writer : std::string("abcdefgh"))
        ports.append("<e name='").append(1, writer).append("' checked='true'/>\n");
    writeFile(Conf::getConfFileName(), "<c><filter><port>" + ports + "</port></filter></c>");
    for (const char writer : std::string("abcdefgh")) {
        if (::fork() != 0)
            continue;
        int kept = 0;
        for (int change = 0; change < 12; ++change) {
            const std::string name(1, writer), state = Conf::checkState2Str(change % 2 != 0);
            kept += Conf::setFilterChecked(Conf::FT_PORT, name, change % 2 != 0);
            for (int look = 0; look < 20; ++look)
                kept += onDisk().find("name='" + name + "' checked=\"" + state) != std::string::npos;
        }
        std::_Exit(kept == 12 * 21 ? 0 : 1);
    }
    int status = 0, failures = 0;
    while (::wait(&status) > 0)
        failures += status != 0;
    EXPECT_EQ(0, failures);
}

TEST_F(Document, UnusableDocumentIsNotWritten) {
    writeFile(Conf::getConfFileName(), "<config><first>");
    EXPECT_FALSE(Conf::setAllFilterChecked(true) || Conf::setFilterChecked(Conf::FT_PORT, "p1", true));
    EXPECT_EQ(0, Conf::saveAdvanceInfo({}));
    EXPECT_EQ("<config><first>", onDisk());
    std::filesystem::remove(Conf::getConfFileName());
    EXPECT_FALSE(Conf::setAllFilterChecked(true) || std::filesystem::exists(Conf::getConfFileName()));
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
}

} // namespace
