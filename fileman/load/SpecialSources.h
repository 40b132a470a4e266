#pragma once

#include "conf/ConfRecords.h"
#include "fileman/LoadInfo.h"
#include "fileman/load/ActiveFilter.h"
#include "fileman/load/FileLister.h"
#include "fileman/scan/StartUpScan.h"

// The sources outside the regular tree of ports and types. Each returns the number of records added.
class SpecialSources {
public:
    SpecialSources(StorageTree& tree, const ActiveFilter& filter, LoadedList& loaded, FileLister& files,
                   StartUpScan& scan)
        : m_tree(tree), m_filter(filter), m_loaded(loaded), m_files(files), m_scan(scan) {}

    int loadScreenShots();
    int loadExtraDir(const ExtraDirInfo& extra);
    int loadFiberMonitor(const LoadInfo& info);
    // The MTIE measurements: a record stands for a measurement's directory, not for a file.
    int loadMtie();

private:
    // Whether screenshots were found on disk, or nothing was.
    bool isScreenTypeCurrent(const std::string& dir);

    StorageTree& m_tree;
    const ActiveFilter& m_filter;
    LoadedList& m_loaded;
    FileLister& m_files;
    StartUpScan& m_scan;
};
