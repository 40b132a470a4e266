#pragma once

// The fixed paths that are part of the instrument's interface. No setting changes them; tests use them in a
// private mount namespace. All are absolute unless the comment says otherwise. Only kStagingRoot ends in a
// slash.
namespace paths {

inline constexpr char kHome[] = "/home";

inline constexpr char kConfDir[] = "/home/.resultmanager";
inline constexpr char kConfFile[] = "/home/.resultmanager/result-config-ktd.xml";

inline constexpr char kScreenDir[] = "/home/ktb/screen";
inline constexpr char kMtieDir[] = "/home/2g5/mtie-results";

// The first-level directories of the test families.
inline constexpr char k1geDir[] = "/home/1ge";
inline constexpr char k10gDir[] = "/home/10g";
inline constexpr char kSdhDir[] = "/home/2g5/html-files";
inline constexpr char kSdhPort1Dir[] = "/home/2g5/html-files/p1";
inline constexpr char kSdhPort2Dir[] = "/home/2g5/html-files/p2";
inline constexpr char kOdu0ResultDir[] = "/home/odu0-rslt";
inline constexpr char kOdu0ProfileDir[] = "/home/odu0-prof";
inline constexpr char kOtuxPort1Dir[] = "/home/10g/html-files/p1/otux";
inline constexpr char kOtuxPort2Dir[] = "/home/10g/html-files/p2/otux";
inline constexpr char kRootDir[] = "/home/root";
inline constexpr char kCpriDir[] = "/home/cpri";
inline constexpr char kCpriPort1Dir[] = "/home/cpri/p1";
inline constexpr char kCpriPort2Dir[] = "/home/cpri/p2";

// Relative to kHome, like configured directories: the OTU3 ports of the 100G module.
inline constexpr char kOtu3ResultsBelowHome[] = "fileman/100ge/ktw-rslt/otu3port";
inline constexpr char kOtu3ProfilesBelowHome[] = "fileman/100ge/ktw-prof/otu3port";

// The places where deliveries collect their files. Every user of the machine can write in /tmp.
inline constexpr char kStagingRoot[] = "/tmp/";
inline constexpr char kDownloadDir[] = "/tmp/download";
// An archive has this path until it is complete.
inline constexpr char kNewDownloadArchive[] = "/tmp/download/.zip/archive.zip";
inline constexpr char kDownloadArchive[] = "/tmp/tarn_download.zip";
// The lock files are outside the directories that a delivery empties.
inline constexpr char kDownloadLock[] = "/tmp/.tarn_download.lock";
inline constexpr char kPdfDir[] = "/tmp/pdf";
inline constexpr char kNewPdfArchive[] = "/tmp/pdf/.zip/archive.zip";
inline constexpr char kPdfArchive[] = "/tmp/tarn_pdf.zip";
inline constexpr char kPdfLock[] = "/tmp/.tarn_pdf.lock";
inline constexpr char kPdfTaskList[] = "/tmp/htm2pdf_task_list";
// The task list has this name until it is complete.
inline constexpr char kNewPdfTaskList[] = "/tmp/.htm2pdf_task_list.new";
inline constexpr char kPdfConverter[] = "/usr/local/ktb/bin/htm2pdf";

} // namespace paths
