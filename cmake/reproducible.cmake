# jx_reproducible: the same files from the same sources in whatever folder. Debug information names
# sources relative to the project. The sanitizers and the coverage reports need real paths.
add_library(jx_reproducible INTERFACE)
if(NOT JX_SANITIZE AND NOT JX_COVERAGE)
  # ccache may pass paths that are relative to the build folder.
  file(RELATIVE_PATH upwards ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
  target_compile_options(jx_reproducible INTERFACE
    -ffile-prefix-map=${upwards}=./ -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
    -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build)
endif()

# Archives without dates and users; not every ar leaves them out by itself.
foreach(language C CXX)
  set(CMAKE_${language}_ARCHIVE_CREATE "<CMAKE_AR> qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
  set(CMAKE_${language}_ARCHIVE_APPEND "<CMAKE_AR> qD <TARGET> <LINK_FLAGS> <OBJECTS>")
  set(CMAKE_${language}_ARCHIVE_FINISH "<CMAKE_RANLIB> -D <TARGET>")
endforeach()
