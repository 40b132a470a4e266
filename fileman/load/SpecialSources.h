#pragma once

#include "conf/ConfRecords.h"
#include "fileman/LoadInfo.h"
#include "fileman/load/ActiveFilter.h"
#include "fileman/load/FileLister.h"
#include "fileman/scan/StartUpScan.h"

// The sources outside the regular tree of ports and types. Each has a source file of its own and returns the
// number of records added.
class SpecialSources {
public:
    SpecialSources(StorageTree& tree, const ActiveFilter& filter, LoadedList& loaded, FileLister& files,
                   StartUpScan& scan)
        : m_tree(tree), m_filter(filter), m_loaded(loaded), m_files(files), m_scan(scan) {}

    int loadScreenShots();
    int loadExtraDir(const ExtraDirInfo& extra);
    int loadFiberMonitor(const LoadInfo& info);
    // Loads the MTIE measurements. Each record is the directory of one measurement, not a file.
    int loadMtie();

private:
    // Whether the scan found screenshots, or no type at all.
    bool isScreenTypeCurrent(const std::string& dir);

    StorageTree& m_tree;
    const ActiveFilter& m_filter;
    LoadedList& m_loaded;
    FileLister& m_files;
    StartUpScan& m_scan;
};
