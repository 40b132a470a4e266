#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "TestFiles.h"
#include "fileman/CFileManager.h"

using Rows = std::vector<std::string>;

inline std::string joined(const Names& names) {
    std::string text;
    for (const std::string& name : names)
        text += (&name == &names.front() ? "" : ",") + name;
    return names.empty() ? "-" : text;
}

inline Names sorted(Names names) {
    names.sort();
    return names;
}

// Starts each test with an empty storage tree and with the configuration state of a new process. It refuses
// to run outside private storage.
class PreparedStorage : public testing::Test {
protected:
    PreparedStorage() { reset(); }

    static void reset() {
        const char* const isPrivate = std::getenv("FILEMAN_PRIVATE_STORAGE");
        if (isPrivate == nullptr || !std::filesystem::exists("/tmp/.private-storage")) {
            std::fputs("storage_test: not in private storage, see scripts/with-storage\n", stderr);
            std::_Exit(2);
        }
        for (const auto& entry : std::filesystem::directory_iterator("/home"))
            std::filesystem::remove_all(entry.path());
        resetConfState();
    }
    static void files(std::initializer_list<const char*> names) {
        for (const std::string name : names)
            writeFile("/home/" + name, "");
    }
    static void dirs(std::initializer_list<const char*> names) {
        for (const std::string name : names)
            std::filesystem::create_directories("/home/" + name);
    }
    // Writes the document and reads it like a request.
    static void useDocument(const std::string& document) {
        writeFile(CFileManConf::getConfFileName(), document);
        ASSERT_TRUE(CFileManConf::readConf(CFileManConf::getConfFileName()));
    }
    static void configure(const std::string& sections) {
        useDocument("<config><filter>" + sections + "</filter></config>");
    }

    // Calls load on a new store with the filter. Returns one line per added record, sorted, because the order
    // of a directory is not fixed.
    static Rows load(const std::function<int(CFileManager&)>& load, const _ResultFilter& filter = {}) {
        CFileManager store;
        store.setFilter(filter);
        const int count = load(store);
        std::list<_ResultInfo*> loaded;
        store.getLoadedResults(loaded);
        EXPECT_EQ(static_cast<std::size_t>(count), loaded.size());
        Rows rows;
        for (const _ResultInfo* info : loaded) {
            EXPECT_EQ(0u, info->path.find("/home/"));
            rows.push_back(info->module + "|" + info->mode + "|" + info->test + "|" + info->port + "|" +
                           info->rsltype + "|" + info->type + " " + info->path.substr(6));
        }
        std::sort(rows.begin(), rows.end());
        return rows;
    }
};
