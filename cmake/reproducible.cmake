# jx_reproducible: the same files from the same sources in whatever folder. Debug information names
# sources relative to the project. The sanitizers and the coverage reports need real paths.
add_library(jx_reproducible INTERFACE)
if(NOT JX_SANITIZE AND NOT JX_COVERAGE)
  set(jx_source_map -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
  set(jx_build_map -ffile-prefix-map=${CMAKE_BINARY_DIR}=./build)
  # The last that fits holds: the inner folder's.
  cmake_path(IS_PREFIX CMAKE_BINARY_DIR "${PROJECT_SOURCE_DIR}" jx_source_is_inside)
  if(jx_source_is_inside)
    set(jx_maps ${jx_build_map} ${jx_source_map})
  else()
    set(jx_maps ${jx_source_map} ${jx_build_map})
  endif()
  # ccache may pass paths that are relative to the build folder.
  file(RELATIVE_PATH jx_upwards ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR})
  target_compile_options(jx_reproducible INTERFACE -ffile-prefix-map=${jx_upwards}=./ ${jx_maps})
endif()

# Archives without dates and users; not every ar leaves them out by itself.
foreach(language C CXX)
  set(CMAKE_${language}_ARCHIVE_CREATE "<CMAKE_AR> qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
  set(CMAKE_${language}_ARCHIVE_APPEND "<CMAKE_AR> qD <TARGET> <LINK_FLAGS> <OBJECTS>")
  set(CMAKE_${language}_ARCHIVE_FINISH "<CMAKE_RANLIB> -D <TARGET>")
endforeach()
