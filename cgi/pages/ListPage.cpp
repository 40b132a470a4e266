#include <array>
#include <cstdio>
#include <functional>
#include <string_view>
#include <vector>

#include "cgi/CFileManCGI.h"
#include "cgi/Output.h"
#include "cgi/pages/CGICommonUtils.h"
#include "cgi/pages/PageLine.h"
#include "common/CCommUtils.h"
#include "fileman/CFileManager.h"

namespace {

using page::line;
using Html = CGICommonUtils;
using RowVisitor = std::function<void(const RecordParts&)>;
// Shows each record of a list page to its visitor.
using RowSource = std::function<void(const RowVisitor&)>;

// The elements of griddata on their way to standard output. Values stand as stored, also those that end the
// script's string, and the last element has its comma too: wanted, the scripts rely on these bytes.
//
// Gathered here rather than in stdio, which looks at its state for each of the pieces of 100,000 rows.
class RowWriter {
public:
    RowWriter() = default;
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    ~RowWriter() { flush(); }

    void write(const RecordParts& record) {
        if (m_common != &record.common)
            prepare(record.common);
        constexpr std::string_view kBeforeName = "', name: '";
        constexpr std::string_view kEnd = "' },\n";
        const std::size_t size = m_beforeIdEnd.size() + record.idEnd.size() + kBeforeName.size() +
                                 record.name.size() + m_beforeDate.size() + record.datetime.size() +
                                 m_beforePathEnd.size() + record.pathEnd.size() + kEnd.size();
        if (size > static_cast<std::size_t>(m_end - m_at))
            makeRoom(size);
        put(m_beforeIdEnd);
        put(record.idEnd);
        put(kBeforeName);
        put(record.name);
        put(m_beforeDate);
        put(record.datetime);
        put(m_beforePathEnd);
        put(record.pathEnd);
        put(kEnd);
    }

private:
    // What does not differ between the files of one directory.
    void prepare(const _ResultInfo& common) {
        m_common = &common;
        m_beforeIdEnd.assign("\t\t{ id: '").append(common.id);
        m_beforeDate.assign("', module: '").append(common.module);
        m_beforeDate.append("', mode: '").append(common.mode);
        m_beforeDate.append("', test: '").append(common.test);
        m_beforeDate.append("', port: '").append(common.port).append("', datetime: '");
        m_beforePathEnd.assign("', rsltype: '").append(common.rsltype);
        m_beforePathEnd.append("', path: '").append(common.path);
    }

    void put(std::string_view text) { m_at += text.copy(m_at, text.size()); }

    void makeRoom(std::size_t size) {
        flush();
        if (size <= static_cast<std::size_t>(m_end - m_begin))
            return;
        m_large.resize(size);
        m_begin = m_at = m_large.data();
        m_end = m_begin + size;
    }

    // Past stdio, which would copy everything once more; what stands there goes out first.
    void flush() {
        if (m_at == m_begin)
            return;
        std::fflush(stdout);
        output::write({m_begin, static_cast<std::size_t>(m_at - m_begin)});
        m_at = m_begin;
    }

    const _ResultInfo* m_common = nullptr; // the last record's
    std::string m_beforeIdEnd;
    std::string m_beforeDate;
    std::string m_beforePathEnd;
    std::array<char, 32768> m_buffer; // half a pipe: the server empties one half while the other fills
    std::vector<char> m_large;        // instead, once a single row is larger
    char* m_begin = m_buffer.data();
    char* m_at = m_begin;
    char* m_end = m_begin + m_buffer.size();
};

void writeGridData(const RowSource& showRows) {
    line(1, "var griddata = [");
    {
        RowWriter rows;
        showRows([&rows](const RecordParts& record) { rows.write(record); });
    }
    line(2, "];");
}

void writeHiddenInput(const char* format, const std::string& value) {
    line(2, Html::createHTMLine(format, value.c_str()));
}

// A line of the page is a line here.
// clang-format off
void writePageUntilForms(const RowSource& showRows) {
    Html::writeCGIHeader();
    Html::writeHTMLBeginNode();
    line(0, "<head>");
    line(1, R"(<link href="../css/fileman.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../js/fileman.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../js/homepage.js" type="text/javascript"></script>)");
    line(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-all.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../LigerUI/lib/jquery/jquery-1.3.2.min.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/core/base.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerGrid.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerDialog.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.min.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.all.js" type="text/javascript"></script>)");
    line(1, R"(<script type="text/javascript">)");
    writeGridData(showRows);
    line(0, "</script>");
    line(0, "</head>");
    line(0, R"(<body onload="onInitPages();">)");
    line(1, R"(<form id="fm_form1" name="fm_form1">)");
    line(2, R"(<div style="display:block; background-color:white;">)");
    line(3, R"(<div id="rsltgrid" style="margin:0; padding:0;"></div>)");
    line(2, "</div>");
    line(1, "</form>");
    line(1, R"(<div style="display:none;"></div>)");
}
// clang-format on

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a list of their own
int CFileManCGI::writeFileManPage(std::list<_ResultInfo*> results) {
    writePageUntilForms([&results](const RowVisitor& visitor) {
        for (const _ResultInfo* const record : results)
            visitor(partsOf(*record));
    });
    return writeForms();
}

int CFileManCGI::writeFileManPage(const CFileManager& store) {
    writePageUntilForms([&store](const RowVisitor& visitor) { store.forEachLoaded(visitor); });
    return writeForms();
}

int CFileManCGI::writeForms() {
    writeSubmitForm();
    writeCommandForm();
    line(0, "</body>");
    Html::writeHTMLEndNode();
    return 1;
}

// clang-format off

void CFileManCGI::writeSubmitForm() {
    const _AdvanceInfo& advance = m_filter.advanceInfo;
    line(1, R"(<form action="fileman.cgi" id="fm_form">)");
    writeHiddenInput(R"(<input type="hidden" id="fmtype" name="fmtype" value="%s" />)", getFileManTypeString());
    writeHiddenInput(R"(<input type="hidden" id="module" name="module" value="%s" />)", CCommUtils::join(m_filter.modules, ","));
    writeHiddenInput(R"(<input type="hidden" id="mode" name="mode" value="%s" />)", CCommUtils::join(m_filter.modes, ","));
    writeHiddenInput(R"(<input type="hidden" id="test" name="test" value="%s" />)", CCommUtils::join(m_filter.tests, ","));
    writeHiddenInput(R"(<input type="hidden" id="port" name="port" value="%s" />)", CCommUtils::join(m_filter.ports, ","));
    writeHiddenInput(R"(<input type="hidden" id="jobid" name="jobid" value="%s" />)", advance.jobId);
    writeHiddenInput(R"(<input type="hidden" id="account" name="account" value="%s" />)", advance.account);
    writeHiddenInput(R"(<input type="hidden" id="locator" name="locator" value="%s" />)", advance.locator);
    writeHiddenInput(R"(<input type="hidden" id="type" name="type" value="%s" />)", advance.type);
    writeHiddenInput(R"(<input type="hidden" id="fname" name="fname" value="%s" />)", advance.fileName);
    writeHiddenInput(R"(<input type="hidden" id="prefix" name="prefix" value="%s" />)", advance.prefix);
    writeHiddenInput(R"(<input type="hidden" id="suffix" name="suffix" value="%s" />)", advance.suffix);
    line(1, "</form>");
}
// clang-format on

void CFileManCGI::writeCommandForm() {
    line(1, R"(<form action="fileman.cgi" id="cmd_form">)");
    writeHiddenInput(R"(<input type="hidden" id="opertype" name="opertype" value="%s" />)", "");
    writeHiddenInput(R"(<input type="hidden" id="rsltid" name="rsltid" value="%s" />)", "");
    line(1, "</form>");
}
