# The API reference: `cmake --build build --target docs` runs Doxygen over the
# exported headers into build/docs/html. Any warning fails the target.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  set(VSUPT_DOCS_OUTPUT_DIR ${PROJECT_BINARY_DIR}/docs)
  configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${VSUPT_DOCS_OUTPUT_DIR}/Doxyfile @ONLY)
  add_custom_target(docs
    COMMAND ${DOXYGEN_EXECUTABLE} ${VSUPT_DOCS_OUTPUT_DIR}/Doxyfile
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "API reference in ${VSUPT_DOCS_OUTPUT_DIR}/html"
    VERBATIM)
endif()
