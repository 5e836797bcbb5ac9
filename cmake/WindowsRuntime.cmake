# The compiler's runtime DLLs (libstdc++, libgcc's unwinder, winpthreads) go
# beside the library: in the build's bin folder, where the tests and examples
# run, and into the installed bin folder with the library.
set(VBU_WINDOWS_RUNTIME "")
foreach(_dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${_dll}
                  OUTPUT_VARIABLE _path OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${_path}" OR NOT EXISTS "${_path}")
    message(FATAL_ERROR "The compiler's runtime ${_dll} is not where the compiler says (${_path})")
  endif()
  list(APPEND VBU_WINDOWS_RUNTIME ${_path})
  file(COPY ${_path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
endforeach()
install(FILES ${VBU_WINDOWS_RUNTIME} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)
