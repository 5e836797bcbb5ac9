# Debian packages, made from the build tree by `cpack -G DEB`:
#   libvantorobasicutils<major.minor>  the shared library (component Runtime)
#   libvantorobasicutils-dev           headers, CMake package, pkg-config file
#                                      and the link name (component Development)
# The runtime package's dependencies (libc, libstdc++, liburing) come from
# dpkg-shlibdeps; the development package depends on the runtime package of
# the same version. Files install under /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantorobasicutils)
set(CPACK_PACKAGE_VENDOR "Vantoro")
set(CPACK_PACKAGE_CONTACT "VantoroBasicUtils developers <vbu-dev@vantoro.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "libvantorobasicutils${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}: the shared library")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvantorobasicutils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION}: headers, CMake package and pkg-config file")
include(CPack)
