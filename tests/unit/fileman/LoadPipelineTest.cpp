#include "ConfiguredTree.h"
#include "fileman/RecordId.h"

namespace {

using Conf = CFileManConf;
using Records = std::list<_ResultInfo*>;

class StartUpScan : public PreparedStorage {};

class Pipeline : public ConfiguredTree {
protected:
    static Rows rows(void (CFileManager::*member)(Records&), const _ResultFilter& filter) {
        const auto count = [&](CFileManager& store) {
            Records out;
            (store.*member)(out);
            return static_cast<int>(out.size());
        };
        return load(count, filter);
    }
};

TEST_F(Pipeline, LoadAllListsEveryShapeAndSource) {
    const Rows profiles = {"10G|E|RFC|GE|Profile|rfc e-prof/geport/rfc-setup/p.html",
                           "10G|E||XE|Profile|x x2/y.html",
                           "Common|||GE|Profile|opm comp/geport/opm-setup/q.html"};
    // loadAll names all ports, so the extra directory without a port is left out.
    Rows all = {"10G|E|RFC|GE|Result|rfc e-rslt/geport/rfc-result/a.html",
                "10G|E|RFC|XE|Result|rfc e-rslt/xeport/rfc-result/a.png",
                "10G|E|||Result|fmonitor e-rslt/fmonitor-result/f.html",
                "2G5|SDH/PDH|Bert||Result|bert flat/s.html",
                "2G5|SDH/PDH|Wander||Result|mtie 2g5/mtie-results/m1/m1",
                "CPRI|C|RFC||Result|rfc c/rfc/c.bmp",
                "CPRI|C|||Result|cpri-layer1 c/cpri-layer1-rslt/c.html",
                "Common||Screen||Result|screen ktb/screen/shot.png",
                "Common|||GE|Result|opm com/geport/opm-result/o.html"};
    _ResultFilter ignored{{}, {"none"}, {"none"}, {"none"}, true, true, {}};
    ignored.advanceInfo.prefix = "none";
    EXPECT_EQ(profiles, rows(&CFileManager::loadAllProfiles, ignored));
    EXPECT_EQ(all, rows(&CFileManager::loadAllResults, ignored));
    all.insert(all.end(), profiles.begin(), profiles.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all, rows(&CFileManager::loadAll, ignored));
}

TEST_F(Pipeline, ChosenRecordsAreThoseOfTheWholeListWithTheirDates) {
    const std::string longName = std::string(240, 'n') + ".html";
    files({("e-rslt/geport/rfc-result/" + longName).c_str()});
    // Files, a measurement (which is not a file), and an identifier that is cut.
    const auto isChosen = [](const std::string& id) {
        return id.find("_RFC_") != std::string::npos || id.find("_Wander_") != std::string::npos;
    };
    const auto told = [](const Records& records) {
        Rows rows;
        for (const _ResultInfo* info : records) {
            rows.push_back(info->id + "|" + info->name + "|" + info->path + "|" + info->datetime);
            EXPECT_TRUE(!info->datetime.empty() && info->id.size() <= kLongestId);
        }
        return rows;
    };
    Records all, chosen;
    CFileManager().loadAll(all);
    CFileManager().loadChosen(chosen, isChosen);
    all.remove_if([&](const _ResultInfo* info) { return !isChosen(info->id); });
    EXPECT_EQ(6u, chosen.size());
    EXPECT_EQ(told(all), told(chosen));
}

TEST_F(Pipeline, UnknownModuleLeavesTheStoreAsItWas) {
    CFileManager store;
    _ResultFilter filter{{"10G", "nowhere"}, {}, {"screen"}, {}, true, false, {}};
    store.setFilter(filter);
    ASSERT_EQ(2, store.loadScreenShot());
    Records loaded;
    for (const auto load : {&CFileManager::loadResults, &CFileManager::loadAll})
        EXPECT_THROW((store.*load)(loaded), std::out_of_range);
    EXPECT_THROW(store.loadChosen(loaded, [](const std::string&) { return true; }), std::out_of_range);
    store.getFilter(filter);
    EXPECT_EQ(Names{"screen"}, filter.tests);
    store.getLoadedResults(loaded);
    EXPECT_EQ(2u, loaded.size());
    // Dates are read later only while records are chosen.
    store.setFilter({{"2G5"}, {}, {"bert"}, {}, true, false, {}});
    store.loadResults(loaded);
    ASSERT_EQ(1u, loaded.size());
    EXPECT_NE("", loaded.front()->datetime);
}

TEST_F(Pipeline, RecordsStayUntilTheListIsCleared) {
    CFileManager store;
    Records loaded;
    store.loadScreenShots(loaded);
    store.loadScreenShots(loaded);
    EXPECT_EQ(4u, loaded.size()) << "the same two again, in the store's list";
    store.clearLoaded();
    store.getLoadedResults(loaded);
    EXPECT_TRUE(loaded.empty());
}

TEST_F(Pipeline, ScreenShotsNeedTheirTypeOnDiskIfTheFilterNamesNone) {
    const auto shots = [] { return CFileManager().loadScreenShot(); };
    EXPECT_EQ(2, shots()) << "no type was found";
    Conf::addCurrentType("RFC");
    EXPECT_EQ(0, shots());
    Conf::addCurrentType(Conf::getTypeName("screen"));
    EXPECT_EQ(2, shots());
}

// The path of a directory gives the same answer as the scan, for its mode and for screenshots.
TEST_F(StartUpScan, EmptyFilterSelectsTheSameFilesBeforeAndAfterIt) {
    const std::tuple<std::string, std::string, std::size_t> rows[] = {{"e-rslt", "E", 1},
                                                                      {"deep/e-rslt/below", "E", 1},
                                                                      {"ktr", "Aaa", 1},
                                                                      {"10g/p1/bert", "SDH", 1},
                                                                      {"1ge/bert", "SDH", 0},
                                                                      {"cpri/e", "CPRI", 1},
                                                                      {"ktb/screen", "KTB", 2},
                                                                      {"2g5-cpril1-rslt", "CPRI", 0},
                                                                      {"x-rslt/odu0bert", "ODU0", 0},
                                                                      {"usbd/e-rslt", "E", 0},
                                                                      {"a_files/e-rslt", "E", 0},
                                                                      {"link/../e-rslt", "E", 1},
                                                                      {"link", "E", 0},
                                                                      {"links/e-rslt", "E", 0},
                                                                      {"2g5/ktp-ds3/x", "SDH", 1},
                                                                      {"kts-a-rslt/ktr", "Aaa", 1}};
    for (const auto& [dir, mode, expected] : rows) {
        reset();
        // The mode X is always found. Otherwise every configured mode would count as current.
        configure(R"(
        <mode>
          <e name='Aaa' rslt_dir_name='first'/> <e name='CPRI' rslt_dir_name='cpri'/>
          <e name='E' rslt_dir_name='e-rslt'/> <e name='KTB' rslt_dir_name='ktb-rslt'/>
          <e name='ODU0' rslt_dir_name='odu0bert'/> <e name='SDH' rslt_dir_name='ktp-rslt'/>
          <e name='X' rslt_dir_name='x-rslt'/>
        </mode>
        <category><e name='S' key='screen'/><e name='B' key='bert'/></category>
        <module><e name='M'><o mode_name=')" +
                  mode + "'><h test_name='Result' list='t' dir_name='" + dir + "'/></o></e></module>");
        dirs({"x-rslt", "links", "bert-result"});
        std::filesystem::create_symlink("x-rslt", "/home/link");
        std::filesystem::create_symlink("../x-rslt", "/home/links/e-rslt");
        writeFile("/home/" + dir + "/t/a.html", "");
        writeFile("/home/" + dir + "/shot.png", "");
        for (const bool isScanned : {false, true}) {
            CFileManager store;
            if (!isScanned)
                store.deferScan();
            store.scanFilters();
            store.setFilter({{}, {}, {}, {}, true, false, {}});
            Records loaded;
            store.loadResults(loaded);
            EXPECT_EQ(expected, loaded.size() + static_cast<std::size_t>(store.loadScreenShot()))
                << dir << (isScanned ? " after" : " before") << " the scan";
        }
    }
}

} // namespace
