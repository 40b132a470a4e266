#pragma once

#include <string>

#include "fileman/scan/ModuleScan.h"
#include "fileman/scan/VocabularyScan.h"

// The scan of the whole storage tree that belongs to the start of a request, and which a request may defer.
//
// Few requests need its outcome: the filter pages, and a list that names no modes. Running it only for them
// saves the others from reading directories that they do not list (figures: docs/performance.md). Whoever
// looks at the current lists of CFileManConf calls finish first.
//
// A list that names no modes asks, mode by mode, whether the scan finds the mode. The scan passes every
// directory below the storage root that a listing shows as one, and registers a mode by the name of each. So
// the names on the way to a mode's own directory predict the answer, as a rule with yes, and only where they
// do not, the scan runs.
class StartUpScan {
public:
    explicit StartUpScan(StorageTree& tree) : m_tree(tree), m_modules(tree), m_vocabulary(tree) {}

    // From now on start leaves the work to finish.
    void deferNext() { m_defers = true; }
    void start();
    // Runs the scan that was left; nothing when there is none.
    void finish();

    // Whether a scan that was left is bound to find the mode, or the type of the screenshots, because it
    // passes the directory at path. False where only the scan can tell.
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
