#include <array>
#include <cstdio>

#include "cgi/CFileManCGI.h"
#include "cgi/answer/Escape.h"
#include "cgi/pages/CGICommonUtils.h"
#include "cgi/pages/PageHead.h"
#include "cgi/pages/PageLine.h"
#include "common/NameSet.h"
#include "conf/CFileManConf.h"

namespace {

using page::defaultLine;
using page::either;
using page::line;
using page::value;
using Html = CGICommonUtils;
using NameList = std::list<std::string>;

// One group of check boxes: its options, and the filter list that says which of them are checked.
struct FieldRule {
    CFileManCGI::FilterType type;
    const char* id;
    const char* legend;
    void (*readOptions)(NameList& out);
    NameList _ResultFilter::*checked;
};

// clang-format off
// The fields whose check boxes the user may change.
constexpr std::array<FieldRule, 4> kFieldRules = {{
    {CFileManCGI::FIELD_MODULE, "field_module", "Modules", &CFileManConf::getAllModuleNames, &_ResultFilter::modules},
    {CFileManCGI::FIELD_MODE, "field_mode", "Modes", &CFileManConf::getCurrentMode, &_ResultFilter::modes},
    {CFileManCGI::FIELD_TEST, "field_test", "Tests", &CFileManConf::getCurrentTypeNames, &_ResultFilter::tests},
    {CFileManCGI::FIELD_PORT, "field_port", "Ports", &CFileManConf::getCurrentPort, &_ResultFilter::ports},
}};

constexpr char kOptionFormat[] = R"(<div style="margin:5 0 5 5;width:120px;float:left;font-size:14px;"><input type="checkbox" id="%s" value="%s" %s>%s</input></div>)";
constexpr char kStrictOptionFormat[] = R"(<div><label><input type="checkbox" id="%s" value="%s" %s />%s</label></div>)";
// The page only shows whether the list holds results and profiles; the user cannot change these two here.
constexpr char kDisabledOptionFormat[] = R"(<div style="margin:5 0 5 5;width:120px;float:left;font-size:14px;"><input type="checkbox" id="%s" value="%s" %s disabled>%s</input></div>)";
constexpr char kStrictDisabledOptionFormat[] = R"(<div><label><input type="checkbox" id="%s" value="%s" %s disabled />%s</label></div>)";

void writeFieldBegin(const char* id, const char* legend) {
    line(0, Html::createHTMLine(either(R"(<fieldset id="%s" style="margin:10px; border:1px solid gray;font-size:14px;">)", R"(<fieldset id="%s">)"), id));
    line(1, Html::createHTMLine("<legend>%s</legend>", legend));
}
// clang-format on

// HTML allows no blank in an id, so that a strict page holds it percent-encoded.
std::string optionId(CFileManCGI::FilterType type, const std::string& option) {
    const std::string id = CFileManCGI::getOptionId(type, option);
    return Answers::current().areStrict() ? escape::percentEncoded(id, "_-./") : id;
}

void writeOption(const char* format, CFileManCGI::FilterType type, const std::string& option, bool checked) {
    const std::string id = optionId(type, option);
    const std::string state = CFileManCGI::checkStat2String(checked);
    const std::string name = value(option);
    line(1, Html::createHTMLine(format, id.c_str(), name.c_str(), state.c_str(), name.c_str()));
}

void writeFieldEnd() {
    line(0, "</fieldset>");
}

void writeResultTypeField(const _ResultFilter& filter) {
    constexpr auto kType = CFileManCGI::FIELD_RESULT_TYPE;
    writeFieldBegin("field_rslt_type", "Result/Profile");
    writeOption(either(kDisabledOptionFormat, kStrictDisabledOptionFormat), kType, "Result",
                filter.includeResults);
    writeOption(either(kDisabledOptionFormat, kStrictDisabledOptionFormat), kType, "Profile",
                filter.includeProfiles);
    writeFieldEnd();
}

void writeField(const FieldRule& rule, const _ResultFilter& filter) {
    NameList options;
    rule.readOptions(options);
    const NameSet checked(filter.*rule.checked);
    writeFieldBegin(rule.id, rule.legend);
    for (const std::string& option : options)
        writeOption(either(kOptionFormat, kStrictOptionFormat), rule.type, option, checked.contains(option));
    writeFieldEnd();
}

// Each line of the page is one line of this source.
// clang-format off
void writeButtonRow(const char* okId, const char* cancelId) {
    line(3, "<tr>");
    line(4, either(R"(<td colspan="3" align="center" class="l-table-edit-td">)", R"(<td class="l-table-edit-td">)"));
    line(4, Html::createHTMLine(either(R"(<input type="button" id="%s" value="OK" style="width:100px;" />)", R"(<input type="button" id="%s" value="OK" />)"), okId));
    line(4, Html::createHTMLine(either(R"(<input type="button" id="%s" value="Cancel" style="width:100px; margin-left:50px;" />)", R"(<input type="button" id="%s" value="Cancel" />)"), cancelId));
    line(4, "</td>");
    line(3, "</tr>");
    line(2, "</table>");
}

void writeTextRow(const char* label, const char* id, const std::string& stored) {
    line(3, "<tr>");
    line(4, Html::createHTMLine(either(R"(<td align="right" class="l-table-edit-td">%s:</td>)", R"(<td class="l-table-edit-td">%s:</td>)"), label));
    line(4, Html::createHTMLine(either(R"(<td align="left" class="l-table-edit-td"><input name="%s" type="text" id="%s" ltype="text" value="%s" /></td>)",
                                     R"(<td class="l-table-edit-td"><input name="%s" type="text" id="%s" value="%s" /></td>)"),
                                id, id, value(stored).c_str()));
    line(4, either(R"(<td align="left"></td>)", "<td></td>"));
    line(3, "</tr>");
}
// clang-format on

void writePageEnd() {
    line(1, "</form>");
    defaultLine(1, R"(<div style="display:none;"></div>)");
    line(0, "</body>");
    Html::writeHTMLEndNode();
}

} // namespace

// Each line of the page is one line of this source.
// clang-format off
void CFileManCGI::writePriFilterPage() {
    page::beginFilterPage("initPriFilter();");
    line(1, R"(<form name="pri_form" id="pri_form">)");
    writeOptionField(FIELD_RESULT_TYPE);
    writeOptionField(FIELD_MODULE);
    writeOptionField(FIELD_MODE);
    writeOptionField(FIELD_TEST);
    writeOptionField(FIELD_PORT);
    line(2, either(R"(<table align="center" height="50" cellpadding="0" cellspacing="0" class="l-table-edit" style="margin-bottom:0px;">)", R"(<table class="l-table-edit">)"));
    writeButtonRow("pri_btn_ok", "pri_btn_cancel");
    writePageEnd();
}

void CFileManCGI::writeAdvFilterPage() {
    const _AdvanceInfo& advance = m_filter.advanceInfo;
    page::beginFilterPage("initAdvFilter();");
    line(1, R"(<form name="adv_form" id="adv_form">)");
    line(2, either(R"(<table align="center" height="400" cellpadding="0" cellspacing="0" class="l-table-edit" >)", R"(<table class="l-table-edit">)"));
    writeTextRow("Job ID", "adv_jobid", advance.jobId);
    writeTextRow("Account", "adv_account", advance.account);
    writeTextRow("File Name", "adv_file_name", advance.fileName);
    writeTextRow("Prefix", "adv_prefix", advance.prefix);
    writeTextRow("Suffix", "adv_suffix", advance.suffix);
    writeButtonRow("adv_btn_ok", "adv_btn_cancel");
    writePageEnd();
}
// clang-format on

void CFileManCGI::writeOptionField(FilterType type) {
    if (type == FIELD_RESULT_TYPE) {
        writeResultTypeField(m_filter);
        return;
    }
    for (const FieldRule& rule : kFieldRules) {
        if (rule.type == type)
            writeField(rule, m_filter);
    }
}

std::string CFileManCGI::checkStat2String(bool checked) {
    return checked ? "checked" : "";
}

void CFileManCGI::startOptionColumn(int width, int height) {
    std::printf(R"(<div style="width:%d; height:%d; float:left;border:1px solid red;">)"
                "\n",
                width, height);
}

void CFileManCGI::endOptionColumn() {
    line(0, "</div>");
}
