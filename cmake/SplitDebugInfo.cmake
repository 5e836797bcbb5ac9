# Run after the shared library is linked (cmake -P, with LIBRARY and OUT_DIR):
# keeps its debug information in OUT_DIR/.build-id/xx/yyyy.debug, the place
# where debuggers look for it by the library's build ID, so that the
# packaged library can be stripped and its debug package carry the rest.
find_program(OBJCOPY NAMES objcopy REQUIRED)
find_program(READELF NAMES readelf REQUIRED)
execute_process(COMMAND ${READELF} -n ${LIBRARY} OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${OUT_DIR})
if(NOT notes MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
  message(STATUS "${LIBRARY} has no build ID: no separate debug information")
  return()
endif()
file(MAKE_DIRECTORY ${OUT_DIR}/.build-id/${CMAKE_MATCH_1})
execute_process(COMMAND ${OBJCOPY} --only-keep-debug --compress-debug-sections ${LIBRARY}
                        ${OUT_DIR}/.build-id/${CMAKE_MATCH_1}/${CMAKE_MATCH_2}.debug
                COMMAND_ERROR_IS_FATAL ANY)
