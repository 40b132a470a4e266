#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "conf/ResultFilter.h"
#include "fileman/ResultInfo.h"

class CFileManager;
class StagingArea;

// One request, and the pages and files that answer it. The members are a given interface; each source file
// named below implements one concern of it. All answers are written to standard output. No member reports a
// failure, because every request has a valid answer. Only strict answers escape values (Answers.h).
class CFileManCGI {
public:
    // The action that a request names. The numbers are part of the interface; 10 is never used.
    enum ActionType : unsigned {
        ACTION_LIST_ALL = 1,
        ACTION_LIST_RESULTS = 2,
        ACTION_LIST_PROFILES = 3,
        ACTION_LIST_SCREENSHOTS = 4,
        ACTION_PRIMARY_FILTER = 5,
        ACTION_ADVANCED_FILTER = 6,
        ACTION_VIEW = 7,
        ACTION_PDF = 8,
        ACTION_DOWNLOAD = 9,
        ACTION_REQUEST_INFO = 11,
    };

    // The fields of the primary filter page. No other number is a field.
    enum FilterType : int {
        FIELD_MODULE = 1,
        FIELD_MODE = 2,
        FIELD_TEST = 3,
        FIELD_PORT = 4,
        FIELD_RESULT_TYPE = 5,
    };

    // What a list is written as.
    enum class ListFormat { Page, JsonLines, Csv };

    // --- the request (Request.cpp) ---

    // Splits the decoded query into m_queryInfo. A repeated key keeps its first value. Always returns 1.
    int parseQueryInfo(const char* query);
    // The same for strict answers, with the encoded query: it is split first and decoded then. Returns false
    // when an escape is malformed.
    bool readQuery(const char* encoded);
    // Returns the pieces of a key's value between its commas. Without the key the list is empty.
    std::optional<std::list<std::string>> getQueryList(const std::string& key) const;
    // Adds one "key=value" piece to m_queryInfo. Returns false when the piece is empty or has no '='.
    bool parseKeyValue(const std::string& pair);
    // Returns an ActionType. The key "filter" is tried first, then "fmtype", then "opertype". An unknown
    // value counts as absent.
    unsigned getFileManType() const;
    // Returns the value of "fmtype" as given, or "" when the query has no such key.
    std::string getFileManTypeString() const;
    // Returns what the key "format" asks for, or nullopt for an unknown value. In default answers the key
    // means nothing, and every list is a page.
    std::optional<ListFormat> getListFormat() const;
    // Returns a test that is true for the identifiers that the key "rsltid" names.
    std::function<bool(const std::string& id)> getChooser() const;
    // Sets the fields of filter that the query names, leaves the others unchanged, and copies filter to
    // m_filter.
    void getFilterFromRequest(_ResultFilter& filter);

    // --- element ids that the pages and the scripts share (OptionIds.cpp) ---

    static std::string getRowCheckId(const std::string& name);
    static std::string getModeOptionId(const std::string& name);
    static std::string getTestOptionId(const std::string& name);
    static std::string getPortOptionId(const std::string& name);
    static std::string getRsltTypeOptionId(const std::string& name);
    // Returns "" for a type that is not a field.
    static std::string getOptionId(FilterType type, const std::string& name);

    // --- the list page (ListPage.cpp) ---

    // Writes the whole response for these records. Always returns 1.
    int writeFileManPage(std::list<_ResultInfo*> results);
    // The same for everything that the store has loaded; it makes no list of all records.
    int writeFileManPage(const CFileManager& store);
    // Writes the form that carries the filter of this list into the next request.
    void writeSubmitForm();
    // Writes the empty form into which the scripts put a command and the chosen ids.
    void writeCommandForm();

    // --- the list in the format that the request names (CsvAndJsonList.cpp) ---

    // Writes the whole response for everything that the store has loaded: the list page, or the same rows as
    // JSON Lines or CSV.
    void writeList(const CFileManager& store);

    // --- the filter pages (FilterPages.cpp) ---

    void writePriFilterPage();
    void writeAdvFilterPage();
    // Writes one group of check boxes, or nothing for a type that is not a field.
    void writeOptionField(FilterType type);
    // Returns "checked" or "".
    static std::string checkStat2String(bool checked);
    // No page uses these two.
    static void startOptionColumn(int width, int height);
    static void endOptionColumn();

    // --- delivery (View.cpp, Download.cpp, PdfExport.cpp, Attachment.cpp) ---
    // The query key "rsltid" names the records.

    // Sends the file of the first chosen record. It is one file, however many ids the request names.
    void viewResults(std::list<_ResultInfo*> results);
    // Sends each file inline. For a file that cannot be opened, only the header is sent.
    void viewFiles(std::list<std::string> paths);
    // Sends the chosen records with their companions as one archive.
    void downloadResults(std::list<_ResultInfo*> results);
    // Sends one file as an attachment. For a file that cannot be opened, only the header is sent. Below /tmp
    // the file must be a regular file with one hard link, owned by this user or root. Always returns 1.
    int downloadFile(const std::string& path);
    // Sends the PDFs that the converter makes of the chosen records: one PDF as it is, none or several as an
    // archive.
    void convert2PDF(std::list<_ResultInfo*> results);

    // Makes the place ready where this delivery collects its files: the last thing that needs the right to
    // write in /tmp. Call it before the request confines itself. Deliveries that are called without it do it
    // themselves. (StagingPlaces.cpp)
    StagingArea& stagingArea(ActionType delivery);

    // --- data ---

    std::map<std::string, std::string> m_queryInfo; // the decoded query, by key
    _ResultFilter m_filter;                         // the result of getFilterFromRequest, for the pages

private:
    int writeForms();

    std::map<std::string, std::list<std::string>>
        m_queryLists; // by readQuery: the pieces, decoded one by one
    std::shared_ptr<StagingArea> m_stagingArea;
};
