#include "conf/XmlEdit.h"

#include <fcntl.h>
#include <sys/file.h>
#include <tinyxml.h>

#include <cerrno>
#include <chrono>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "common/AtomicFile.h"
#include "common/CCommUtils.h"
#include "common/Report.h"
#include "common/Retry.h"
#include "conf/XmlFile.h"
#include "conf/XmlLimits.h"
#include "conf/XmlRewrite.h"

namespace {

constexpr char kTask[] = "rewrite document";

// The waits add up to ten seconds. A writer needs a few milliseconds, so after this time the lock is stuck.
constexpr int kMostWaits = 2000;
constexpr auto kWait = std::chrono::milliseconds(5);

// Returns 0, or an errno value. It is EWOULDBLOCK when another process still holds the lock.
int takeLock(int directory) {
    for (int waits = 0; retryInterrupted([&] { return ::flock(directory, LOCK_EX | LOCK_NB); }) != 0;
         ++waits) {
        if (errno != EWOULDBLOCK || waits == kMostWaits)
            return errno;
        std::this_thread::sleep_for(kWait);
    }
    return 0;
}

// Returns no descriptor, with a line on standard error, on failure.
UniqueFd lockDirectory(const std::string& path) {
    UniqueFd directory(
        retryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    const int error = directory ? takeLock(directory.get()) : errno;
    if (error == 0)
        return directory;
    if (error == EWOULDBLOCK)
        report("lock directory", path, "still held by another writer");
    else
        reportErrno("lock directory", path, error);
    return {};
}

// The document as text, to compare two documents.
std::string printed(const TiXmlDocument& document) {
    TiXmlPrinter printer;
    printer.SetStreamPrinting(); // without the indentation, which may be longer than the document
    document.Accept(&printer);
    return printer.Str();
}

// Returns content with the attribute values of document, or nullopt when the result would not be read back as
// document.
std::optional<std::string> rewritten(const std::string& content, const TiXmlDocument& document) {
    TiXmlDocument before, after;
    xml::Failure failure;
    if (!xml::parse(before, content, failure))
        return std::nullopt;
    std::optional<std::string> changed = withAttributesOf(document, before, content);
    before.Clear();
    if (!changed || changed->size() > static_cast<std::size_t>(xml::kLargestFile) ||
        !xml::parse(after, *changed, failure) || printed(after) != printed(document))
        return std::nullopt;
    return changed;
}

} // namespace

XmlEdit::XmlEdit(const std::string& path) : m_path(resolveLinks(path)) {
    xml::Failure failure;
    if (m_path.empty())
        failure.errorNumber = errno;
    else if (m_lock = lockDirectory(CCommUtils::absFilePath(m_path) + "/"); !m_lock || load(failure))
        return;
    xml::reportFailure(path, failure);
}

XmlEdit::~XmlEdit() = default;

bool XmlEdit::load(xml::Failure& failure) try {
    std::optional<std::string> content = xml::readContent(m_path, xml::kLargestFile, failure);
    if (!content)
        return false;
    m_content = std::move(*content);
    m_document = std::make_unique<TiXmlDocument>();
    if (!xml::parse(*m_document, m_content, failure))
        m_document.reset();
    return m_document != nullptr;
} catch (const std::bad_alloc&) {
    m_document.reset();
    failure.errorNumber = ENOMEM;
    return false;
}

bool XmlEdit::save() try {
    xml::Failure failure;
    const std::optional<std::string> now = xml::readContent(m_path, xml::kLargestFile, failure);
    // A writer without the lock may have replaced the file. Its change must not be lost.
    if (now != m_content) {
        report(kTask, m_path, "it has changed meanwhile");
        return false;
    }
    std::optional<std::string> changed = rewritten(m_content, *m_document);
    if (!changed) {
        report(kTask, m_path, "it cannot hold the new values");
        return false;
    }
    if (!replaceFile(m_path, *changed))
        return false;
    m_content = std::move(*changed);
    return true;
} catch (const std::bad_alloc&) {
    reportErrno(kTask, m_path, ENOMEM);
    return false;
}
