# The Windows package, made from the build tree by `cpack -G ZIP`: one zip
# that unpacks to a prefix holding
#   bin/       VantoroBasicUtils.dll and the compiler's runtime DLLs
#   lib/       the import library VantoroBasicUtils.dll.a and the CMake package
#   include/   the headers
# A host built with the same mingw-w64 finds it with find_package after
# adding the unpacked folder to CMAKE_PREFIX_PATH.
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME VantoroBasicUtils)
set(CPACK_PACKAGE_VENDOR "Vantoro")
set(CPACK_PACKAGE_FILE_NAME "VantoroBasicUtils-${PROJECT_VERSION}-win64-mingw")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)
include(CPack)
