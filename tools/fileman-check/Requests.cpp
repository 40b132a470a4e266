#include "fileman-check/Requests.h"

#include <iterator>

#include "common/FixedPaths.h"
#include "fileman/CFileManager.h"

namespace {

Requests::Rows loadedRows(const CFileManager& store) {
    Requests::Rows rows;
    store.forEachLoaded([&](const ListedRow& row) {
        rows.emplace(row.path,
                     Requests::Row{std::string(row.id), std::string(row.module), std::string(row.mode),
                                   std::string(row.test), std::string(row.port), std::string(row.rsltype)});
    });
    return rows;
}

Requests::Rows filteredRows(CFileManager& store, bool results, bool profiles) {
    _ResultFilter filter;
    filter.includeResults = results;
    filter.includeProfiles = profiles;
    store.setFilter(filter);
    store.reloadResult();
    return loadedRows(store);
}

} // namespace

const char* Requests::title(Kind kind) {
    constexpr const char* kTitles[] = {"fmtype=all", "fmtype=rslt", "fmtype=prof", "fmtype=screen",
                                       "view, download and PDF"};
    static_assert(std::size(kTitles) == kKinds);
    return kTitles[kind];
}

Requests::Requests() {
    CFileManager store;
    store.scanDir();
    store.scanResultFilters(paths::kHome);
    store.loadScreenShot();
    m_rows[Screenshots] = loadedRows(store);
    m_rows[Results] = filteredRows(store, true, false);
    m_rows[Profiles] = filteredRows(store, false, true);
    store.loadAllResults();
    m_rows[All] = loadedRows(store);
    std::list<_ResultInfo*> chosen;
    store.loadChosen(chosen, [](const std::string&) { return true; });
    m_rows[Deliveries] = loadedRows(store);
}
