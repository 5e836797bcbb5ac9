# vbu_use_utf8_code_page(<dir>): every program defined in <dir> runs with
# UTF-8 as its ANSI code page (Windows 10 1903 and later, and Wine), as the
# library's tests and examples expect of the system's code page.
function(vbu_use_utf8_code_page dir)
  get_property(_targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(_target IN LISTS _targets)
    get_target_property(_type ${_target} TYPE)
    if(_type STREQUAL "EXECUTABLE")
      target_sources(${_target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/windows/utf8.rc)
    endif()
  endforeach()
endfunction()
