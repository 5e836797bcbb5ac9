# Debian packages, made from the build tree by `cpack -G DEB`:
#   libvantorobasicutils<major.minor>      the shared library (component Runtime)
#   libvantorobasicutils<major.minor>-dbg  its debug information (component Debug)
#   libvantorobasicutils-dev               headers, CMake package, pkg-config file
#                                          and the link name (component Development)
# The runtime package's dependencies (libc, libstdc++, liburing) come from
# dpkg-shlibdeps; the development package depends on the runtime package of
# the same version. Files install under /usr, the library in the multiarch
# folder; each package carries its copyright file and changelog as Debian
# asks (/usr/share/doc/<package>/).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantorobasicutils)
set(CPACK_PACKAGE_VENDOR "Vantoro")
set(CPACK_PACKAGE_CONTACT "VantoroBasicUtils developers <vbu-dev@vantoro.invalid>")
# Each package names its own synopsis (its description's first line).
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# Installed with DESTDIR, so that the pkg-config file, made at install time,
# names /usr and not the staging folder.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL Runtime Development Debug)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)
set(CPACK_COMPONENT_DEBUG_DEPENDS Runtime)
# The library is stripped in the packages; its debug information, split off
# after every link, goes to the debug package under /usr/lib/debug/.build-id.
set(CPACK_STRIP_FILES ON)
set(VBU_DEBUG_INFO_DIR ${PROJECT_BINARY_DIR}/debug-info)
add_custom_command(TARGET VantoroBasicUtils POST_BUILD
  COMMAND ${CMAKE_COMMAND} -DLIBRARY=$<TARGET_FILE:VantoroBasicUtils> -DOUT_DIR=${VBU_DEBUG_INFO_DIR}
          -P ${PROJECT_SOURCE_DIR}/cmake/SplitDebugInfo.cmake
  VERBATIM)
install(DIRECTORY ${VBU_DEBUG_INFO_DIR}/ DESTINATION lib/debug
        COMPONENT Debug EXCLUDE_FROM_ALL)

set(VBU_RUNTIME_PACKAGE "libvantorobasicutils${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
set(VBU_DEVELOPMENT_PACKAGE libvantorobasicutils-dev)
set(VBU_DEBUG_PACKAGE ${VBU_RUNTIME_PACKAGE}-dbg)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Packaged apart from the upstream sources: a Debian revision, and so a
# changelog.Debian.gz beside the copyright file.
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE vantorobasicutils)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${VBU_RUNTIME_PACKAGE})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The system's library cache is renewed through dpkg's trigger.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
# A description's first line is its synopsis; CPack indents the others.
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION} (shared library)
Wide text, frame-accurate timecodes with NTSC drop-frame, containers whose
iterators survive changes, bit and byte access, large-file work in
2048-byte sectors, a synchronous message bus, background tasks, undo, idle
work, settings and folders, for DVD authoring applications.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${VBU_DEVELOPMENT_PACKAGE})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} (development files)
The headers, the CMake package and the pkg-config file of
VantoroBasicUtils, for building hosts against the shared library.")
set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME ${VBU_DEBUG_PACKAGE})
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_DESCRIPTION "${PROJECT_DESCRIPTION} (debug information)
The debug information of the shared library of VantoroBasicUtils, found
by debuggers through the library's build ID.")

# /usr/share/doc/<package>/copyright (machine-readable, from LICENSE) and
# changelog.Debian.gz, for each package.
file(READ ${PROJECT_SOURCE_DIR}/LICENSE _license)
string(REGEX REPLACE "^MIT License\n\n[^\n]*\n\n" "" _license "${_license}")
string(REGEX REPLACE "\n+$" "" _license "${_license}")
string(REGEX REPLACE "\n\n" "\n.\n" _license "${_license}")
string(REGEX REPLACE "\n" "\n " _license "${_license}")
set(VBU_DEBIAN_DIR ${PROJECT_BINARY_DIR}/debian)
file(WRITE ${VBU_DEBIAN_DIR}/copyright
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: VantoroBasicUtils
Upstream-Contact: ${CPACK_PACKAGE_CONTACT}

Files: *
Copyright: 2026 The VantoroBasicUtils developers
License: Expat
 ${_license}
")
configure_file(${PROJECT_SOURCE_DIR}/cmake/changelog.Debian.in ${VBU_DEBIAN_DIR}/changelog.Debian @ONLY)
find_program(VBU_GZIP gzip)
if(VBU_GZIP)
  execute_process(COMMAND ${VBU_GZIP} -9nc ${VBU_DEBIAN_DIR}/changelog.Debian
                  OUTPUT_FILE ${VBU_DEBIAN_DIR}/changelog.Debian.gz)
  foreach(_component Runtime Development Debug)
    string(TOUPPER ${_component} _upper)
    install(FILES ${VBU_DEBIAN_DIR}/copyright ${VBU_DEBIAN_DIR}/changelog.Debian.gz
      DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${VBU_${_upper}_PACKAGE}
      PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
      COMPONENT ${_component} EXCLUDE_FROM_ALL)
  endforeach()
endif()
# The desktop module (component Desktop), where it is built: a package of
# its own, which the runtime package recommends, so that a host's dialogs
# and message boxes are real windows on a desktop and a server need not
# take GTK.
if(TARGET VantoroBasicUtils-gtk)
  set(VBU_DESKTOP_PACKAGE libvantorobasicutils-gtk)
  list(APPEND CPACK_COMPONENTS_ALL Desktop)
  set(CPACK_COMPONENT_DESKTOP_DEPENDS Runtime)
  set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME ${VBU_DESKTOP_PACKAGE})
  set(CPACK_DEBIAN_DESKTOP_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_DESKTOP_PACKAGE_SHLIBDEPS ON)
  # The module needs the library of the runtime package, which is not
  # installed while the packages are made: dpkg-shlibdeps finds it in the
  # build tree, and the dependency on that package comes from the components.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS ${VBU_DESKTOP_PACKAGE})
  set(CPACK_DEBIAN_DESKTOP_DESCRIPTION "${PROJECT_DESCRIPTION} (desktop dialogs)
The GTK 3 module of VantoroBasicUtils: with it, a host's open and save
dialogs are the desktop's file chooser and its messages are message boxes,
and a GTK host's main loop runs the library's queue.")
  if(VBU_GZIP)
    install(FILES ${VBU_DEBIAN_DIR}/copyright ${VBU_DEBIAN_DIR}/changelog.Debian.gz
      DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${VBU_DESKTOP_PACKAGE}
      PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
      COMPONENT Desktop EXCLUDE_FROM_ALL)
  endif()
endif()
include(CPack)
