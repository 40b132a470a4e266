#pragma once

#include <string>

#include "fileman/scan/ModuleScan.h"
#include "fileman/scan/VocabularyScan.h"

// The scan of the whole storage tree. It belongs to the start of a request, but a request may delay it.
//
// Few requests need its result: the filter pages, and a list that names no modes. All others save the time
// for directories that they do not list (figures: docs/performance.md). finish must be called before the
// current lists of CFileManConf are read.
//
// A list that names no modes asks, mode by mode, whether the scan would find the mode. The scan visits every
// directory below the storage root that a listing shows, and registers a mode by its name. So the names on
// the path of a mode's own directory usually predict the answer yes. Where they do not, the scan runs.
class StartUpScan {
public:
    explicit StartUpScan(StorageTree& tree) : m_tree(tree), m_modules(tree), m_vocabulary(tree) {}

    // From now on, start only marks the scan as pending.
    void deferNext() { m_defers = true; }
    void start();
    // Runs the pending scan, if there is one.
    void finish();

    // Whether the pending scan will certainly find the mode, or the type of the screenshots, because it
    // visits the directory at path. False when only the scan can answer, or when none is pending.
    bool willFindMode(const std::string& path, const std::string& mode) const;
    bool willFindScreenType(const std::string& path) const;

    ModuleScan& modules() { return m_modules; }
    VocabularyScan& vocabulary() { return m_vocabulary; }

private:
    void run();

    StorageTree& m_tree;
    ModuleScan m_modules;
    VocabularyScan m_vocabulary;
    bool m_defers = false;
    bool m_isPending = false;
};
