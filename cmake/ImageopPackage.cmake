# Debian packages: libimageop<major> with the shared libraries, libimageop-dev with what a program is built with.
set(IMAGEOP_MAINTAINER "imageop maintainers <maintainers@imageop.invalid>" CACHE STRING
    "Maintainer named by the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME imageop)
set(CPACK_PACKAGE_VENDOR imageop)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL imageop_runtime imageop_development)
set(CPACK_COMPONENT_IMAGEOP_DEVELOPMENT_DEPENDS imageop_runtime)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/documents.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${IMAGEOP_MAINTAINER})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_IMAGEOP_RUNTIME_PACKAGE_NAME libimageop${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_IMAGEOP_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_IMAGEOP_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_IMAGEOP_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_IMAGEOP_RUNTIME_DESCRIPTION "Shared libraries.
Paints images onto images or surfaces under the PDF transparency model: blend
modes, constant alpha, stencils, soft masks, transparency groups. The same call
gives the same bytes on every CPU.")

set(CPACK_DEBIAN_IMAGEOP_DEVELOPMENT_PACKAGE_NAME libimageop-dev)
set(CPACK_DEBIAN_IMAGEOP_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_IMAGEOP_DEVELOPMENT_DESCRIPTION "Development files.
Headers, the CMake package and pkg-config files to build programs with imageop.")

include(CPack)
