# cmake -DBUILD=FOLDER -DVERSION=VERSION -DSCRATCH=FOLDER -P check_vcpkg.cmake: runs the portfile with
# stand-ins for the functions of vcpkg that it calls. They configure the sources as the port says, but
# install what BUILD holds already.
cmake_minimum_required(VERSION 3.25)
set(PORT jxwem)
set(port_folder ${CMAKE_CURRENT_LIST_DIR}/../packaging/vcpkg)
set(CURRENT_PACKAGES_DIR ${SCRATCH}/packages)

file(READ ${port_folder}/vcpkg.json manifest)
string(JSON name GET "${manifest}" name)
string(JSON version GET "${manifest}" version)
if(NOT "${name} ${version}" STREQUAL "${PORT} ${VERSION}")
  message(FATAL_ERROR "vcpkg.json is for ${name} ${version}")
endif()

# require(PATH): it must be in the package.
function(require path)
  if(NOT EXISTS ${CURRENT_PACKAGES_DIR}/${path})
    message(FATAL_ERROR "${path} is not in the package")
  endif()
endfunction()

function(vcpkg_cmake_configure)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" SOURCE_PATH OPTIONS)
  execute_process(COMMAND ${CMAKE_COMMAND} -G Ninja -S ${arg_SOURCE_PATH} -B ${SCRATCH}/build
    -DCMAKE_BUILD_TYPE=Release ${arg_OPTIONS}
    OUTPUT_QUIET ERROR_VARIABLE errors COMMAND_ERROR_IS_FATAL ANY)
  if(errors)  # an option that the project does not know, for one
    message(FATAL_ERROR "${errors}")
  endif()
endfunction()

function(vcpkg_cmake_install)
  foreach(prefix ${CURRENT_PACKAGES_DIR} ${CURRENT_PACKAGES_DIR}/debug)
    execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} OUTPUT_QUIET
      COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endfunction()

function(vcpkg_cmake_config_fixup)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "PACKAGE_NAME;CONFIG_PATH" "")
  require(${arg_CONFIG_PATH}/${arg_PACKAGE_NAME}-config.cmake)
  file(COPY ${CURRENT_PACKAGES_DIR}/${arg_CONFIG_PATH}/
    DESTINATION ${CURRENT_PACKAGES_DIR}/share/${arg_PACKAGE_NAME})
  file(REMOVE_RECURSE ${CURRENT_PACKAGES_DIR}/${arg_CONFIG_PATH}
    ${CURRENT_PACKAGES_DIR}/debug/${arg_CONFIG_PATH})
endfunction()

function(vcpkg_fixup_pkgconfig)
  require(lib/pkgconfig/jxwem.pc)
endfunction()

function(vcpkg_install_copyright)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "" FILE_LIST)
  file(INSTALL ${arg_FILE_LIST} DESTINATION ${CURRENT_PACKAGES_DIR}/share/${PORT})
endfunction()

include(${port_folder}/portfile.cmake)
foreach(file include/jx/wem.h lib/libjxhost.a lib/jxwem/jxwem.so debug/lib/libjxhost.a
    share/jxwem/jxwem-config.cmake share/jxwem/usage share/jxwem/LICENSE)
  require(${file})
endforeach()
foreach(folder debug/include debug/share)
  if(EXISTS ${CURRENT_PACKAGES_DIR}/${folder})
    message(FATAL_ERROR "${folder} is in the package")
  endif()
endforeach()
