#include <utility>

#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/load/LoadTrace.h"
#include "fileman/load/SpecialSources.h"

int SpecialSources::loadExtraDir(const ExtraDirInfo& extra) {
    const _ResultFilter& filter = m_filter.fields();
    if (!(extra.isResult ? filter.includeResults : filter.includeProfiles))
        return 0;
    // A port filter leaves out every directory without a port, but never one with a port. This is
    // intentional.
    if (extra.port.empty() && !filter.ports.empty())
        return 0;
    if (!m_filter.passesTest(extra.key))
        return 0;
    FileSource source;
    source.dir = entryPath(paths::kHome, extra.dir_name);
    source.record.module = extra.module;
    source.record.mode = extra.mode;
    source.record.test = CFileManConf::getTypeName(extra.key);
    source.record.port = extra.port;
    source.record.rsltype = halfWord(extra.isResult);
    source.record.type = extra.key;
    const int count = m_files.list(std::move(source));
    if (count == 0)
        return 0;
    m_loaded.visitNewestPaths(&trace::writeFoundAt);
    return count;
}
