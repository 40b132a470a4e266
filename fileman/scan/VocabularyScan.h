#pragma once

#include <string>

#include "fileman/disk/StorageTree.h"

// Registers the modes, types and ports that the directory names of the storage tree mean, in the current
// lists of CFileManConf. The filter pages offer only these.
class VocabularyScan {
public:
    explicit VocabularyScan(StorageTree& tree) : m_tree(tree) {}

    // Registers the directory at path, then all directories below it.
    void scan(const std::string& path);

    // Whether a scan from root to the directory at path registers the mode on its way. Also false when the
    // names do not give the answer.
    static bool registersMode(const std::string& root, const std::string& path, const std::string& mode);

private:
    void registerDirectory(const std::string& path);
    bool registerModeDir(const std::string& name, const std::string& parent, const std::string& mode);
    void registerSdhDir(const std::string& name, const std::string& parent, const std::string& mode);
    void registerSuffixedModeDir(const std::string& name, const std::string& mode);
    void registerTypeOrPortDir(const std::string& name, const std::string& mode);

    StorageTree& m_tree;
    // Set after a mode directory "kts-...", whose type directories have one more letter at the beginning.
    bool typePrefixFlag = false;
};
