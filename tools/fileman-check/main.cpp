// fileman-check finds faults in a configuration document and explains why a file is listed or not.
//
//   LinedDocument    reads the document with the line numbers of its elements
//   Sources          finds the directories from which the program lists files
//   DocumentChecks   finds faults in the text of the document
//   Requests         loads what each kind of request finds on disk
//   DirectoryChecks  finds faults that are visible only on disk
//   Explanation      explains one file
//
// This tool has no rules of its own. It calls the classes below conf/ and fileman/.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/FixedPaths.h"
#include "common/Version.h"
#include "conf/CFileManConf.h"
#include "fileman-check/DirectoryChecks.h"
#include "fileman-check/DocumentChecks.h"
#include "fileman-check/Explanation.h"
#include "fileman-check/Findings.h"
#include "fileman-check/LinedDocument.h"

namespace {

enum ExitStatus : int { kFine = 0, kFound = 1, kUsage = 64 };

constexpr char kUsageText[] = R"(usage: fileman-check [--no-storage] [DOCUMENT]
       fileman-check --explain PATH [DOCUMENT]
       fileman-check --version | --help
)";

struct Task {
    std::string document = paths::kConfFile;
    std::string path; // the file to explain; if empty, the document is checked
    bool looksAtStorage = true;
};

// Returns false if the arguments are not valid.
bool parseArguments(const std::vector<std::string_view>& words, Task& task) {
    bool hasDocument = false;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == "--no-storage") {
            task.looksAtStorage = false;
        } else if (*word == "--explain") {
            if (++word == words.end() || word->empty())
                return false;
            task.path = std::filesystem::absolute(*word).lexically_normal();
        } else if (hasDocument || word->empty() || word->front() == '-') {
            return false;
        } else {
            task.document = *word;
            hasDocument = true;
        }
    }
    return task.path.empty() || task.looksAtStorage;
}

// The result store writes diagnostic lines to standard output, because they belong to a response. This
// function sends them to /dev/null instead. Returns the former standard output, or null on failure.
std::FILE* setStandardOutputAside() {
    const int kept = ::dup(STDOUT_FILENO);
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
        return nullptr;
    return kept < 0 ? nullptr : ::fdopen(kept, "w");
}

int runTask(std::FILE* out, const Task& task) {
    Findings findings;
    LinedDocument document;
    const bool isRead = document.read(task.document, findings);
    if (isRead && document.filter() == nullptr)
        findings.add(0, "the root has no element filter: the program reads nothing");
    if (findings.size() != 0 || !CFileManConf::readConf(task.document)) {
        findings.write(out, task.document);
        return kFound;
    }
    const std::vector<Source> sources = readSources(document, findings);
    if (!task.path.empty())
        return explain(out, task.path, sources, Requests()) ? kFine : kFound;
    checkVocabulary(document, findings);
    checkSources(sources, findings);
    if (task.looksAtStorage)
        checkDirectories(sources, Requests(), findings);
    findings.write(out, task.document);
    return findings.size() == 0 ? kFine : kFound;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> words(argv + 1, argv + argc);
    if (words.size() == 1 && words[0] == "--version") {
        std::printf("fileman-check %s\n", kVersion);
        return kFine;
    }
    if (words.size() == 1 && words[0] == "--help") {
        std::fputs(kUsageText, stdout);
        return kFine;
    }
    Task task;
    if (!parseArguments(words, task)) {
        std::fputs(kUsageText, stderr);
        return kUsage;
    }
    std::FILE* const out = setStandardOutputAside();
    if (out == nullptr) {
        std::perror("fileman-check: standard output");
        return EXIT_FAILURE;
    }
    const int status = runTask(out, task);
    if (std::fclose(out) != 0) {
        std::perror("fileman-check: standard output");
        return EXIT_FAILURE;
    }
    return status;
}
