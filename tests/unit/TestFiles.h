#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "conf/CFileManConf.h"
#include "conf/ConfState.h"

// Helpers for test files. writeFile also makes the directories; readFile reads the whole file.
inline std::string writeFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Gives each test its own directory and the configuration state of a new process.
class FilesTest : public testing::Test {
protected:
    FilesTest() {
        std::string name = testing::TempDir() + "unit.XXXXXX";
        m_dir = ::mkdtemp(name.data());
        resetConfState();
    }
    ~FilesTest() override { std::filesystem::remove_all(m_dir); }

    std::string at(const std::string& name) const { return m_dir + "/" + name; }
    std::string write(const std::string& content) const { return writeFile(at("file"), content); }
    bool readConf(const std::string& document) const { return CFileManConf::readConf(write(document)); }
    bool readSections(const std::string& sections) const {
        return readConf("<config><filter>" + sections + "</filter></config>");
    }

private:
    std::string m_dir;
};

using Names = std::list<std::string>;

template<typename... Args>
Names listFrom(void (*get)(Names&, Args...), const std::common_type_t<Args>&... args) {
    Names out;
    get(out, args...);
    return out;
}
