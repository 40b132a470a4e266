#pragma once

#include <string>

#include "fileman/disk/StorageTree.h"

// Registers the modes, types and ports that the directory names of the storage tree stand for in the current
// lists of CFileManConf. The filter pages offer only these.
class VocabularyScan {
public:
    explicit VocabularyScan(StorageTree& tree) : m_tree(tree) {}

    // Registers what path stands for, then all directories below it.
    void scan(const std::string& path);

    // Whether a scan from root that passes the directory at path registers the mode on the way. False also
    // where the names do not tell.
    static bool registersMode(const std::string& root, const std::string& path, const std::string& mode);

private:
    void registerDirectory(const std::string& path);
    bool registerModeDir(const std::string& name, const std::string& parent, const std::string& mode);
    void registerSdhDir(const std::string& name, const std::string& parent, const std::string& mode);
    void registerSuffixedModeDir(const std::string& name, const std::string& mode);
    void registerTypeOrPortDir(const std::string& name, const std::string& mode);

    StorageTree& m_tree;
    // Whether the scan is behind a "kts-" mode directory, whose type directories have one more letter in
    // front.
    bool typePrefixFlag = false;
};
