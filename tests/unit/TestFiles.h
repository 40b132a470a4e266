#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include "conf/CFileManConf.h"
#include "conf/ConfState.h"
#include "tests/Files.h"

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
