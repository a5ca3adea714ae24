# What `cmake --install` lays down and what `cpack` packs: the modules, the SDK, the reference host,
# jxfile and the documents.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(jx_config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/jxwem)

# The module is loaded by path, so it has a folder of its own rather than one of the linker's, and
# always the same one: jxfile finds it relative to its own path.
set(jx_module_folder lib/jxwem)
install(TARGETS jxwem jxcheck LIBRARY DESTINATION ${jx_module_folder})
install(DIRECTORY include/jx DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS jxhost ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS jxfile RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES README.md CHANGELOG.md LICENSE SECURITY.md cmake/copyright
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES examples/host.c examples/host.cpp examples/own_kernel.c examples/own_kernel.h
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(FILES docs/architecture.md docs/host-guide.md docs/performance.md docs/status-codes.md
  docs/testing.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
# Only when the target `reference` has been built.
install(DIRECTORY ${PROJECT_BINARY_DIR}/reference/html DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference
  OPTIONAL)

# jxfile's page and its completion are what `jxfile generate` prints, the other pages what
# tools/man_pages makes of the headers' comments; the checks compare them.
foreach(section 1 3 7)
  file(GLOB pages CONFIGURE_DEPENDS docs/man/*.${section})
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()
install(FILES docs/completion/jxfile.bash RENAME jxfile
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

configure_package_config_file(cmake/jxwem-config.cmake.in ${PROJECT_BINARY_DIR}/jxwem-config.cmake
  INSTALL_DESTINATION ${jx_config_folder}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR jx_module_folder)
# The version file also refuses a build of the other pointer size.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/jxwem-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/jxwem-config.cmake
  ${PROJECT_BINARY_DIR}/jxwem-config-version.cmake DESTINATION ${jx_config_folder})
file(RELATIVE_PATH jx_prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/jxwem.pc.in ${PROJECT_BINARY_DIR}/jxwem.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/jxwem.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The packages are those of this project, not of one that contains it.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME jxwem)
set(CPACK_PACKAGE_CONTACT "jxwem maintainers <maintainers@jxwem.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "file-access module for host kernels, its SDK and jxfile")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Left alone, CPack names the architecture of the machine that packs.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
else()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
endif()
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= 2.36)")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
include(CPack)
