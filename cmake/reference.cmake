# The target `reference`: the pages on the SDK in reference/html of the build folder, from the
# comments in include/jx. A declaration without a comment fails it. Installed when it was built.
find_program(DOXYGEN doxygen)
if(NOT DOXYGEN)
  return()
endif()
configure_file(docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(reference
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${PROJECT_BINARY_DIR}/reference
  COMMAND ${DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
  COMMENT "Writing the reference to reference/html" VERBATIM)
