#include <memory>
#include <string>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/RecordId.h"
#include "fileman/load/SpecialSources.h"
#include "fileman/names/MtieMode.h"

int SpecialSources::loadMtie() {
    // As for the fiber monitor, an empty list selects nothing.
    if (!m_filter.namesTest("mtie"))
        return 0;
    const std::string root = paths::kMtieDir;
    const Directory* const directory = m_tree.open(root);
    if (directory == nullptr)
        return 0;
    _ResultInfo started;
    started.module = kMtieModule;
    started.mode = kMtieMode;
    started.test = CFileManConf::getTypeName("mtie");
    started.rsltype = halfWord(true);
    started.type = "mtie";
    int count = 0;
    for (const DirEntry entry : *directory) {
        const std::string measurement = entryPath(root, entry.name);
        if (entry.type != EntryType::Directory || !m_tree.exists(entryPath(measurement, "mtie")))
            continue;
        // The path contains the name twice, and there is no test that such a file exists. This is
        // intentional: the record is the measurement, not a file.
        const std::string item = entryPath(measurement, entry.name);
        if (!m_files.advanced().passes(entry.name, item))
            continue;
        auto record = std::make_unique<_ResultInfo>(started);
        record->name = entry.name;
        record->path = item;
        if (m_files.readsDates())
            record->datetime = CCommUtils::createDateTime(item);
        record->id = makeId(*record);
        m_loaded.add(record.release());
        ++count;
    }
    return count;
}
