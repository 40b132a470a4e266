#include "StorageFixture.h"
#include "common/CCommUtils.h"
#include "fileman/RecordId.h"

namespace {

using Conf = CFileManConf;

class StartUpScan : public PreparedStorage {};

// A tree with every shape of directory that the pipeline knows, and with every other source.
class Pipeline : public PreparedStorage {
protected:
    Pipeline() {
        configure(R"(
        <mode>
          <e name='E'/>
          <e name='SDH/PDH'/>
          <e name='OSA'/>
          <e name='C'/>
        </mode>
        <category>
          <e name='RFC' key='rfc'/>
          <e name='Bert' key='bert'/>
          <e name='Layer 1' key='cpri-layer1'/>
          <e name='Monitor' key='fmonitor'/>
          <e name='Wander' key='mtie'/>
          <e key='screen'/>
          <e name='OPM' key='opm'/>
          <e name='Extra' key='x'/>
        </category>
        <port>
          <e name='GE' key='ge'/>
          <e name='XE' key='xe'/>
        </port>
        <module>
          <e name='10G'>
            <o mode_name='E'>
              <h test_name='Result' dir_name='e-rslt' under_port_dir='true' list='geport,xeport'/>
              <h test_name='Profile' dir_name='e-prof' under_port_dir='true' list='geport'/>
            </o>
          </e>
          <e name='2G5'>
            <o mode_name='SDH/PDH'>
              <h test_name='Result' dir_name='flat'/>
            </o>
            <o mode_name='OSA'>
              <h test_name='Profile' dir_name='flat'/>
            </o>
          </e>
          <e name='CPRI'>
            <o mode_name='C'>
              <h test_name='Result' dir_name='c' list='cpri-layer1-rslt,rfc'/>
            </o>
          </e>
          <e name='Common'>
            <c test_name='Result' key='opm' dir_name='com' under_port_dir='true' list='geport'/>
            <c test_name='Profile' key='opm' dir_name='comp' under_port_dir='true' list='geport'/>
            <c test_name='Screen' key='screen' dir_name='ktb/screen'/>
          </e>
        </module>
        <extraDir>
          <e module='10G' mode='E' key='x' dir_name='x1' test_name='Result'/>
          <e module='10G' mode='E' port='XE' key='x' dir_name='x2' test_name='Profile'/>
        </extraDir>)");
        files({"e-rslt/geport/rfc-result/a.html",
               "e-rslt/xeport/rfc-result/a.png",
               "e-rslt/geport/bert-rslt/k.html",
               "e-rslt/zeport/rfc-result/no.html",
               "e-rslt/geport/plain/no.html",
               "e-rslt/fmonitor-result/f.html",
               "e-rslt/geport/rfc-result/Last configuration.html",
               "e-rslt/geport/rfc-result/no.txt",
               "e-prof/geport/rfc-setup/p.html",
               "flat/s.html",
               "c/cpri-layer1-rslt/c.html",
               "c/rfc/c.bmp",
               "c/other/no.html",
               "com/geport/opm-result/o.html",
               "comp/geport/opm-setup/q.html",
               "ktb/screen/shot.png",
               "ktb/screen/Last configuration.html",
               "x1/x.html",
               "x2/y.html",
               "2g5/mtie-results/m1/mtie/t",
               "2g5/mtie-results/m2/no",
               "2g5/mtie-results/file"});
        dirs({"e-rslt/geport/rfc-result/dir.html"});
        std::filesystem::create_symlink("a.html", "/home/e-rslt/geport/rfc-result/link.html");
    }

    // Returns the rows of a load, and stores its printed lines in m_printed.
    Rows rows(void (CFileManager::*member)(std::list<_ResultInfo*>&), const _ResultFilter& filter = {}) {
        testing::internal::CaptureStdout();
        const Rows found = load(
            [&](CFileManager& store) {
                std::list<_ResultInfo*> out;
                (store.*member)(out);
                return static_cast<int>(out.size());
            },
            filter);
        m_printed = testing::internal::GetCapturedStdout();
        return found;
    }
    std::string m_printed;
};

const Rows kResults = {"10G|E|Extra||Result|x x1/x.html",
                       "10G|E|Monitor||Result|fmonitor e-rslt/fmonitor-result/f.html",
                       "10G|E|RFC|GE|Result|rfc e-rslt/geport/rfc-result/a.html",
                       "10G|E|RFC|XE|Result|rfc e-rslt/xeport/rfc-result/a.png",
                       "2G5|SDH/PDH|Bert||Result|bert flat/s.html",
                       "2G5|SDH/PDH|Wander||Result|mtie 2g5/mtie-results/m1/m1",
                       "CPRI|C|Layer 1||Result|cpri-layer1 c/cpri-layer1-rslt/c.html",
                       "CPRI|C|RFC||Result|rfc c/rfc/c.bmp",
                       "Common||OPM|GE|Result|opm com/geport/opm-result/o.html",
                       "Common||Screen||Result|screen ktb/screen/shot.png"};
const Rows kProfiles = {"10G|E|Extra|XE|Profile|x x2/y.html",
                        "10G|E|RFC|GE|Profile|rfc e-prof/geport/rfc-setup/p.html",
                        "Common||OPM|GE|Profile|opm comp/geport/opm-setup/q.html"};

bool has(const std::string& row, const char* part) {
    return row.find(part) != std::string::npos;
}

Rows only(const std::function<bool(const std::string&)>& passes) {
    Rows rows = kResults;
    rows.erase(std::remove_if(rows.begin(), rows.end(), [&](const std::string& row) { return !passes(row); }),
               rows.end());
    return rows;
}

TEST_F(Pipeline, LoadAllListsEveryShapeAndSource) {
    _ResultFilter ignored{{}, {"none"}, {"none"}, {"none"}, true, true, {}};
    ignored.advanceInfo.prefix = "none";
    EXPECT_EQ(kProfiles, rows(&CFileManager::loadAllProfiles, ignored));
    EXPECT_EQ("Find at:/home/x2/y.html\nCommon profile: 1.\n", m_printed);
    // loadAll names all ports, so the extra directory without a port is left out.
    Rows expected = only([](const std::string& row) { return !has(row, "Extra"); });
    EXPECT_EQ(expected, rows(&CFileManager::loadAllResults));
    EXPECT_EQ("Common port result: 1.\n", m_printed);
    expected.insert(expected.end(), kProfiles.begin(), kProfiles.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, rows(&CFileManager::loadAll));
}

TEST_F(Pipeline, EmptyModuleListMeansTheModulesFound) {
    _ResultFilter filter;
    filter.includeResults = true;
    EXPECT_EQ(Rows{}, rows(&CFileManager::loadProfiles));
    Conf::addCurrentModule("CPRI");
    EXPECT_EQ(only([](const std::string& row) { return has(row, "CPRI|"); }),
              rows(&CFileManager::loadResults, filter));
}

TEST_F(Pipeline, ChosenRecordsAreThoseOfTheWholeListWithTheirDates) {
    const auto told = [](const std::list<_ResultInfo*>& records) {
        Rows rows;
        for (const _ResultInfo* info : records)
            rows.push_back(info->id + "|" + info->name + "|" + info->path + "|" + info->datetime);
        return rows;
    };
    const std::string longName = std::string(240, 'n') + ".html";
    files({("e-rslt/geport/rfc-result/" + longName).c_str()});
    testing::internal::CaptureStdout();
    std::list<_ResultInfo*> all, chosen;
    CFileManager().loadAll(all);
    // Two files, a measurement (which is not a file), and an identifier that is cut.
    const auto isChosen = [](const std::string& id) { return has(id, "_RFC_") || has(id, "_Wander_"); };
    CFileManager().loadChosen(chosen, isChosen);
    testing::internal::GetCapturedStdout();
    all.remove_if([&](const _ResultInfo* info) { return !isChosen(info->id); });
    EXPECT_EQ(6u, chosen.size());
    EXPECT_EQ(told(all), told(chosen));
    EXPECT_EQ(0u, std::count_if(chosen.begin(), chosen.end(), [](const _ResultInfo* info) {
                  return info->datetime.empty() || info->id.size() > kLongestId;
              }));
}

TEST_F(Pipeline, UnknownModuleLeavesTheStoreAsItWas) {
    CFileManager store;
    _ResultFilter filter{{"10G", "nowhere"}, {}, {"screen"}, {}, true, false, {}};
    store.setFilter(filter);
    ASSERT_EQ(2, store.loadScreenShot());
    std::list<_ResultInfo*> loaded;
    for (const auto load : {&CFileManager::loadResults, &CFileManager::loadAll})
        EXPECT_THROW((store.*load)(loaded), std::out_of_range);
    store.getFilter(filter);
    EXPECT_EQ(Names{"screen"}, filter.tests);
    store.getLoadedResults(loaded);
    EXPECT_EQ(2u, loaded.size());
}

TEST_F(Pipeline, DatesAreReadAgainAfterAChoiceThatFailed) {
    CFileManager store;
    _ResultFilter filter;
    filter.modules = {"nowhere"};
    store.setFilter(filter);
    std::list<_ResultInfo*> loaded;
    EXPECT_THROW(store.loadChosen(loaded, [](const std::string&) { return true; }), std::out_of_range);
    filter.modules = {"2G5"};
    filter.tests = {"mtie"};
    filter.includeResults = true;
    store.setFilter(filter);
    store.loadResults(loaded);
    ASSERT_FALSE(loaded.empty());
    for (const _ResultInfo* const info : loaded)
        EXPECT_NE("", info->datetime) << info->path;
}

// The path of a mode's directory gives the same answer as the scan.
TEST_F(StartUpScan, EmptyFilterSelectsTheSameModesBeforeAndAfterIt) {
    const std::pair<std::string, const char*> rows[] = {
        {"e-rslt", "E"},          {"deep/e-rslt/below", "E"}, {"ktr", "Aaa"},    {"10g/p1/bert", "SDH"},
        {"cpri/e", "CPRI"},       {"ktb/screen", "KTB"},      {"1ge/bert", "-"}, {"usbd/e-rslt", "-"},
        {"a_files/e-rslt", "-"},  {"link/../e-rslt", "E"},    {"link", "-"},     {"2g5-cpril1-rslt", "-"},
        {"x-rslt/odu0bert", "-"}, {"links/e-rslt", "-"},
    };
    for (const auto& [dir, expected] : rows) {
        std::string modes, options;
        for (const auto& [name, key] : {std::pair("Aaa", "first"),
                                        {"CPRI", "cpri"},
                                        {"E", "e-rslt"},
                                        {"KTB", "ktb-rslt"},
                                        {"SDH", "ktp-rslt"}}) {
            modes += std::string("<e name='") + name + "' rslt_dir_name='" + key + "'/>";
            options += std::string("<o mode_name='") + name + "'><h test_name='Result' list='t' dir_name='" +
                       dir + "'/></o>";
        }
        reset();
        // This mode is always found. Otherwise every configured mode would count as current.
        modes += "<e name='X' rslt_dir_name='x-rslt'/>";
        configure("<mode>" + modes + "</mode><module><e name='M'>" + options + "</e></module>");
        dirs({"x-rslt"});
        std::filesystem::create_symlink("x-rslt", "/home/link");
        dirs({"links"});
        std::filesystem::create_symlink("../x-rslt", "/home/links/e-rslt");
        std::filesystem::create_directories("/home/" + dir + "/t");
        writeFile("/home/" + dir + "/t/a.html", "");
        for (const bool isScanned : {false, true}) {
            CFileManager store;
            if (!isScanned)
                store.deferScan();
            store.scanFilters();
            _ResultFilter filter;
            filter.includeResults = true;
            store.setFilter(filter);
            std::list<_ResultInfo*> loaded;
            store.loadResults(loaded);
            Names found;
            for (const _ResultInfo* info : loaded)
                found.push_back(info->mode);
            EXPECT_EQ(expected, joined(found)) << dir << (isScanned ? " after" : " before") << " the scan";
        }
    }
}

TEST_F(Pipeline, RepeatsAreListedAgainUntilTheListIsCleared) {
    files({"e-rslt/xfmonitor"});
    _ResultFilter filter{{"10G", "10G"}, {}, {"fmonitor"}, {}, true, false, {}};
    EXPECT_EQ(Rows(4, kResults[1]), rows(&CFileManager::loadResults, filter));
    CFileManager store;
    EXPECT_EQ(&store, g_FileMan);
    CFileManager();
    EXPECT_EQ(nullptr, g_FileMan) << "the last one has gone";
    std::list<_ResultInfo*> loaded;
    store.loadScreenShots(loaded);
    store.loadScreenShots(loaded);
    EXPECT_EQ(4u, loaded.size()) << "the same two again, in the store's list";
    store.clearLoaded();
    store.getLoadedResults(loaded);
    EXPECT_TRUE(loaded.empty());
}

TEST_F(Pipeline, ScreenShotsNeedTheirTypeOnDiskIfTheFilterNamesNone) {
    const auto load2 = [](CFileManager& store) { return store.loadScreenShot() + store.loadScreenShot(); };
    // Unlike the pipeline, this also lists the last configuration.
    const std::string shot = "Common||Screen||Result|screen ktb/screen/";
    const Rows twice = {shot + "Last configuration.html", shot + "Last configuration.html", shot + "shot.png",
                        shot + "shot.png"};
    EXPECT_EQ(twice, load(load2));
    _ResultFilter filter;
    filter.tests = {"rfc"};
    EXPECT_EQ(Rows{}, load(load2, filter));
    Conf::addCurrentType("RFC");
    EXPECT_EQ(Rows{}, load(load2));
    Conf::addCurrentType(Conf::getTypeName("screen"));
    EXPECT_EQ(twice, load(load2));
    filter.tests = {"screen"};
    EXPECT_EQ(twice, load(load2, filter));
}

TEST_F(Pipeline, ExtraDirectoriesPastTheListAreAnEmptyEntry) {
    files({"top.html"});
    _ResultFilter filter;
    filter.includeProfiles = true;
    testing::internal::CaptureStdout();
    EXPECT_EQ((Rows{"||||Profile| /top.html"}),
              load([](CFileManager& store) { return store.loadExtraResult(2); }, filter));
    EXPECT_EQ("Find at:/home//top.html\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ(Rows{}, load([](CFileManager& store) { return store.loadExtraResult(2); }));
    std::filesystem::remove_all("/home/x2");
    EXPECT_EQ(Rows{}, load([](CFileManager& store) { return store.loadExtraResult(1); }, filter));
}

// The scan has closed a directory before its dates are read.
TEST_F(Pipeline, DatesAreTheFilesOwnBeforeAndAfterTheScan) {
    for (const std::string name : {"1.html", "2.html", "3.html", "4.html", "5.html"})
        files({("c/rfc/" + name).c_str(), ("ktb/screen/" + name).c_str()});
    testing::internal::CaptureStderr();
    for (const bool isScanned : {false, true}) {
        CFileManager store;
        if (!isScanned)
            store.deferScan();
        store.scanFilters();
        store.setFilter({{"CPRI"}, {"C"}, {}, {}, true, false, {}});
        std::list<_ResultInfo*> loaded;
        store.loadResults(loaded);
        EXPECT_EQ(7u, loaded.size());
        for (const _ResultInfo* info : loaded) {
            EXPECT_EQ(CCommUtils::createDateTime(info->path), info->datetime) << info->path;
            EXPECT_NE('0', info->datetime.front());
        }
        EXPECT_EQ(7, store.loadScreenShot());
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

// Each kind of source stores the advanced information in another file.
TEST_F(Pipeline, StoredInformationIsReadFromTheFileOfEachSource) {
    const char* const info = "<r><ktb_advinfo job_id='J7' locator='None'/></r>";
    for (const char* const name :
         {"e-rslt/geport/rfc-result/a", "ktb/screen/shot.xml", "2g5/mtie-results/m1/m1", "x1/x"})
        writeFile(std::string("/home/") + name, info);
    // These are in the wrong place.
    for (const char* const name : {"e-rslt/xeport/rfc-result/a.xml", "c/rfc/c.bmp", "flat/s.xml"})
        writeFile(std::string("/home/") + name, info);
    // In a large directory names are found by an index.
    for (int i = 0; i < 100; ++i)
        writeFile("/home/x1/other" + std::to_string(i), "");
    _ResultFilter filter;
    filter.includeResults = true;
    Conf::getAllTypeKeys(filter.tests);
    const Rows informed = {kResults[0], kResults[2], kResults[5], kResults[9]};
    filter.advanceInfo.jobId = "J7";
    EXPECT_EQ(informed, rows(&CFileManager::loadResults, filter));
    filter.advanceInfo = {};
    filter.advanceInfo.locator = "None";
    EXPECT_EQ(informed, rows(&CFileManager::loadResults, filter));
    filter.advanceInfo.prefix = "s";
    EXPECT_EQ((Rows{kResults[9]}), rows(&CFileManager::loadResults, filter));
}

TEST_F(Pipeline, StoredInformationIsReadAgainAfterAnotherScan) {
    const std::string companion = "/home/ktb/screen/shot.xml";
    _ResultFilter filter;
    filter.advanceInfo.account = "ann";
    CFileManager store;
    store.setFilter(filter);
    for (const char* const account : {"ann", "bob", "ann"}) {
        writeFile(companion, std::string("<r><ktb_advinfo account_id='") + account + "'/></r>");
        store.scanFilters();
        EXPECT_EQ(account == std::string("ann") ? 1 : 0, store.loadScreenShot());
    }
}

} // namespace
