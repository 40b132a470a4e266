# A first version of a recipe: nobody has built an image with it yet. Set SRC_URI to where the sources are kept.
# The browser side needs npm once: run scripts/build-web in the sources before they are packed.
SUMMARY = "Web page of the stored results of a test instrument"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=5c0ad566246550e0be04ff798b535426"
SECTION = "web"

DEPENDS = "libtinyxml libarchive zlib nettle"
SRC_URI = "file://${BPN}-${PV}.tar.gz"

inherit cmake pkgconfig

# libarchive, zlib and nettle are linked from their static libraries: say DISABLE_STATIC:pn-libarchive = "" and so on.
EXTRA_OECMAKE = "-DFILEMAN_STATIC=OFF -DFILEMAN_TESTS=OFF -DFILEMAN_LIBRARIES=ON"

PACKAGES =+ "${PN}-check ${PN}-htm2pdf"
FILES:${PN} += "${datadir}/fileman ${libexecdir}/fileman ${sysconfdir}"
FILES:${PN}-check = "${bindir}/fileman-check"
FILES:${PN}-htm2pdf = "${libexecdir}/fileman/htm2pdf"
FILES:${PN}-dev += "${libdir}/cmake"
RDEPENDS:${PN}-htm2pdf = "python3-core"
RRECOMMENDS:${PN} = "zip"
