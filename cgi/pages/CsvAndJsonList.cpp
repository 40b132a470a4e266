#include <string>
#include <string_view>

#include "cgi/CFileManCGI.h"
#include "cgi/answer/Escape.h"
#include "cgi/answer/Header.h"
#include "cgi/pages/RowFormat.h"
#include "cgi/pages/RowWriter.h"
#include "fileman/CFileManager.h"

namespace {

constexpr std::string_view kJsonLinesType = "application/jsonl; charset=utf-8";
// RFC 4180; the parameter says that the first record holds the names of the fields.
constexpr std::string_view kCsvType = "text/csv; charset=utf-8; header=present";
constexpr ListedRow kFieldNames = {"id",   "name",     "module",  "mode", "test",
                                   "port", "datetime", "rsltype", "path"};

// clang-format off

constexpr RowText withoutTabs(RowText text, std::string_view between) {
    text.id.remove_prefix(text.id.find('{'));
    text.between = between;
    return text;
}

// JSON Lines: the same objects, one per line.
struct JsonLines : JsonValues {
    static constexpr RowText kText = withoutTabs(StrictElements::kText, "\n");
};

// CSV (RFC 4180). A value that a spreadsheet would read as a formula stays as it is: the list is data.
struct CsvRecords {
    static constexpr bool kIsVerbatim = false;
    static constexpr RowText kText = {"", ",", ",", ",", ",", ",", ",", ",", ",", "", "\r\n", "\r\n"};
    static bool isPlain(std::string_view value) { return escape::isPlainInCsv(value); }
    static void append(std::string& out, std::string_view value) {
        if (isPlain(value))
            out += value;
        else
            escape::appendCsv(out, value);
    }
};

// clang-format on

// Nothing in such a list may run in a browser, so it has the policy of a stored file.
void writeHeader(std::string_view type) {
    Header(Status::Ok, Header::Policy::File, type).write();
}

} // namespace

void CFileManCGI::writeList(const CFileManager& store) {
    const RowSource showRows = [&store](const RowVisitor& visitor) { store.forEachLoaded(visitor); };
    switch (getListFormat().value_or(ListFormat::Page)) {
    case ListFormat::Page:
        writeFileManPage(store);
        break;
    case ListFormat::JsonLines:
        writeHeader(kJsonLinesType);
        writeRows<JsonLines>(showRows);
        break;
    case ListFormat::Csv:
        writeHeader(kCsvType);
        writeRows<CsvRecords>([&showRows](const RowVisitor& visitor) {
            visitor(kFieldNames);
            showRows(visitor);
        });
        break;
    }
}
