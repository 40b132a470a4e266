#include <utility>

#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/load/SpecialSources.h"

int SpecialSources::loadFiberMonitor(const LoadInfo& info) {
    // Unlike in other sources, an empty list selects nothing here. This is intentional.
    if (!m_filter.namesTest("fmonitor"))
        return 0;
    FileSource source;
    source.dir = entryPath(entryPath(paths::kHome, info.dir),
                           info.isResult != 0 ? "fmonitor-result" : "fmonitor-setup");
    source.record.module = info.module;
    source.record.mode = info.mode;
    source.record.test = CFileManConf::getTypeName("fmonitor");
    source.record.rsltype = halfWord(info.isResult != 0);
    source.record.type = "fmonitor";
    return m_files.list(std::move(source));
}
