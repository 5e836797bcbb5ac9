# The API reference, from the public headers: `cmake --build build/default
# --target docs` writes build/default/docs/html/index.html. Needs doxygen
# (scripts/setup.sh installs it); without it the target says so and fails.
find_program(VBU_DOXYGEN doxygen)
set(VBU_DOCS_DIR ${PROJECT_BINARY_DIR}/docs)
# The headers are read through build/include/VantoroBasicUtils, so that each
# class page shows the include a host writes: <VantoroBasicUtils/time/CTimecode.h>.
list(TRANSFORM VBU_PUBLIC_HEADERS PREPEND "${PROJECT_BINARY_DIR}/include/VantoroBasicUtils/" OUTPUT_VARIABLE VBU_DOCS_INPUTS)
list(APPEND VBU_DOCS_INPUTS ${VBU_GENERATED_INCLUDE}/VantoroBasicUtils/Version.h)
list(JOIN VBU_DOCS_INPUTS " " VBU_DOCS_INPUT)
configure_file(${PROJECT_SOURCE_DIR}/cmake/Doxyfile.in ${VBU_DOCS_DIR}/Doxyfile @ONLY)
if(VBU_DOXYGEN)
  add_custom_target(docs
    COMMAND ${VBU_DOXYGEN} ${VBU_DOCS_DIR}/Doxyfile
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "API reference in ${VBU_DOCS_DIR}/html/index.html"
    VERBATIM)
else()
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E echo "docs: doxygen is missing; run ./scripts/setup.sh"
    COMMAND ${CMAKE_COMMAND} -E false
    VERBATIM)
endif()
