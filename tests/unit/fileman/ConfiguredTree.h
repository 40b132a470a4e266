#pragma once

#include "StorageFixture.h"

// A configured storage with every shape of directory that loading and scanning know, and with every other
// source.
class ConfiguredTree : public PreparedStorage {
protected:
    ConfiguredTree() {
        useDocument(readFile("tests/unit/fileman/configured.xml"));
        for (const std::string file :
             {"e-rslt/geport/rfc-result/a.html", "e-rslt/xeport/rfc-result/a.png",
              "e-rslt/zeport/rfc-result/no.html", "e-rslt/geport/plain/no.html",
              "e-rslt/fmonitor-result/f.html", "e-prof/geport/rfc-setup/p.html", "flat/s.html",
              "c/cpri-layer1-rslt/c.html", "c/rfc/c.bmp", "c/other/no.html", "com/geport/opm-result/o.html",
              "comp/geport/opm-setup/q.html", "ktb/screen/shot.png", "ktb/screen/Last configuration.html",
              "x1/x.html", "x2/y.html", "2g5/mtie-results/m1/mtie/t", "2g5/mtie-results/m2/no"})
            writeFile("/home/" + file, "");
    }
};
