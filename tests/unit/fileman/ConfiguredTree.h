#pragma once

#include "StorageFixture.h"

// A configured storage with every shape of directory that loading and scanning know, and with every other
// source.
class ConfiguredTree : public PreparedStorage {
protected:
    ConfiguredTree() {
        configure(R"(
        <mode><e name='E'/> <e name='SDH/PDH'/> <e name='OSA'/> <e name='C'/></mode>
        <category>
          <e name='RFC' key='rfc'/> <e name='Wander' key='mtie'/> <e name='Bert' key='bert'/>
          <e key='screen'/> <e key='opm'/> <e key='x'/> <e key='cpri-layer1'/> <e key='fmonitor'/>
        </category>
        <port><e name='GE' key='ge'/> <e name='XE' key='xe'/></port>
        <module>
          <e name='10G'>
            <o mode_name='E'>
              <h test_name='Result' dir_name='e-rslt' under_port_dir='true' list='geport,xeport'/>
              <h test_name='Profile' dir_name='e-prof' under_port_dir='true' list='geport'/>
            </o>
          </e>
          <e name='2G5'>
            <o mode_name='SDH/PDH'><h test_name='Result' dir_name='flat'/></o>
            <o mode_name='OSA'><h test_name='Profile' dir_name='flat'/></o>
          </e>
          <e name='CPRI'>
            <o mode_name='C'><h test_name='Result' dir_name='c' list='cpri-layer1-rslt,rfc,gone'/></o>
          </e>
          <e name='Gone'>
            <o mode_name='E'><h test_name='Result' dir_name='gone'/></o>
          </e>
          <e name='Common'>
            <c test_name='Result' key='opm' dir_name='com' under_port_dir='true' list='geport'/>
            <c test_name='Profile' key='opm' dir_name='comp' under_port_dir='true' list='geport'/>
            <c test_name='Screen' key='screen' dir_name='ktb/screen'/>
          </e>
        </module>
        <extraDir>
          <e module='10G' mode='E' key='x' dir_name='x1' test_name='Result'/>
          <e module='10G' mode='E' port='XE' key='x' dir_name='x2' test_name='Profile'/>
          <e module='10G' mode='E' key='gone' dir_name='gone'/>
          <e module='10g' mode='e' key='rfc' dir_name='x1' test_name='Result'/>
        </extraDir>)");
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
