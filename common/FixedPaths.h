#pragma once

// Every path that is part of the instrument's interface. They are fixed: nothing configures them, and tests
// reach them through a private mount namespace.
namespace paths {

inline constexpr char kHome[] = "/home";

inline constexpr char kConfDir[] = "/home/.resultmanager";
inline constexpr char kConfFile[] = "/home/.resultmanager/result-config-ktd.xml";

// Below kHome.
inline constexpr char kScreenDir[] = "/ktb/screen";
inline constexpr char kMtieDir[] = "/2g5/mtie-results";
// Below kHome, without the slash between.
inline constexpr char kOtu3ResultDir[] = "fileman/100ge/ktw-rslt/otu3port";
inline constexpr char kOtu3ProfileDir[] = "fileman/100ge/ktw-prof/otu3port";

inline constexpr char kDownloadDir[] = "/tmp/download/";
inline constexpr char kDownloadArchive[] = "/tmp/tarn_download.zip";
// The lock files lie outside the directories that a delivery empties.
inline constexpr char kDownloadLock[] = "/tmp/.tarn_download.lock";
inline constexpr char kPdfDir[] = "/tmp/pdf";
inline constexpr char kPdfArchive[] = "/tmp/tarn_pdf.zip";
inline constexpr char kPdfLock[] = "/tmp/.tarn_pdf.lock";
inline constexpr char kPdfTaskList[] = "/tmp/htm2pdf_task_list";
inline constexpr char kPdfConverter[] = "/usr/local/ktb/bin/htm2pdf";

} // namespace paths
