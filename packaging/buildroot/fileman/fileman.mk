################################################################################
#
# fileman
#
################################################################################

# A first version of a recipe: nobody has built an image with it yet. The browser
# side needs npm once: run scripts/build-web in the sources before.
FILEMAN_VERSION = 1.1.1
FILEMAN_SITE = $(FILEMAN_PKGDIR)/../../..
FILEMAN_SITE_METHOD = local
FILEMAN_LICENSE = MIT
FILEMAN_LICENSE_FILES = LICENSE
FILEMAN_DEPENDENCIES = host-pkgconf libarchive nettle tinyxml zlib
FILEMAN_CONF_OPTS = -DFILEMAN_TESTS=OFF

ifeq ($(BR2_STATIC_LIBS),y)
FILEMAN_CONF_OPTS += -DFILEMAN_STATIC=ON
else
FILEMAN_CONF_OPTS += -DFILEMAN_STATIC=OFF
endif

$(eval $(cmake-package))
