# The Debian packages that `cpack` makes: jxwem, libjxhost-dev, jxfile and jxwem-doc.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME jxwem)
set(CPACK_PACKAGE_VENDOR jxwem)
set(CPACK_PACKAGE_CONTACT "jxwem maintainers <maintainers@jxwem.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${jx_debian_architecture})
set(CPACK_DEBIAN_PACKAGE_SOURCE jxwem)
set(package_version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

# jx_package(PART NAME SECTION MULTI_ARCH DESCRIPTION): packs a component of the layout "debian". The
# first line of the description is the synopsis. CPack has no field of its own for multi-arch before
# 3.31; what it writes after "Section: " may go on with further fields.
macro(jx_package part name section multi_arch description)
  string(TOUPPER debian_${part} key)
  list(APPEND CPACK_COMPONENTS_ALL debian_${part})
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION "${section}\nMulti-Arch: ${multi_arch}")
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${description}")
endmacro()
set(CPACK_COMPONENTS_ALL "")

jx_package(module jxwem libs same "file-access module for host kernels
A host program loads this module and reaches records, directories and paths
through one table of operations: text lines in any encoding, binary and stream
records, file information, lists, copies, removal and unique names.
The module has a plain C interface and needs only the C library.")
set(CPACK_DEBIAN_DEBIAN_MODULE_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEBIAN_MODULE_PACKAGE_SUGGESTS jxfile)

jx_package(sdk libjxhost-dev libdevel same "development files for hosts of the file-access module jxwem
The headers of everything that crosses the boundary between a host and the
module (C11, and a wrapper for C++20), the reference host kernel as a static
library, a module that examines a host, and files for CMake and pkg-config.")
set(CPACK_DEBIAN_DEBIAN_SDK_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEBIAN_SDK_PACKAGE_DEPENDS "jxwem (= ${package_version})")
# The library is C++: a program in C links that run-time library too.
set(CPACK_DEBIAN_DEBIAN_SDK_PACKAGE_RECOMMENDS "g++ | c++-compiler")
set(CPACK_DEBIAN_DEBIAN_SDK_PACKAGE_SUGGESTS jxwem-doc)

jx_package(program jxfile utils foreign "records, directories and paths from the command line
The program reads, writes and converts text in any encoding, shows files as
records or bytes, and lists, copies, renames and removes files and folders,
all through the module jxwem. Results can be printed as JSON for scripts.")
set(CPACK_DEBIAN_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEBIAN_PROGRAM_PACKAGE_DEPENDS "jxwem (= ${package_version})")
set(CPACK_DEBIAN_DEBIAN_PROGRAM_PACKAGE_SUGGESTS libjxhost-dev)  # for "jxfile check-host"

jx_package(documents jxwem-doc doc foreign "documents and examples for hosts of the file-access module jxwem
The host guide, the status codes, the reference of the headers as HTML, the
architecture of the module, its speed, and examples: a host in C, one in C++,
and a whole kernel in C.")
set(CPACK_DEBIAN_DEBIAN_DOCUMENTS_PACKAGE_ARCHITECTURE all)

# Dates in the packages are that of the change log, unless the environment says another.
set(CPACK_JX_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_JX_STRIP ${CMAKE_STRIP})
configure_file(packaging/debian/changelog.in ${PROJECT_BINARY_DIR}/debian/changelog @ONLY)
set(CPACK_JX_CHANGELOG ${PROJECT_BINARY_DIR}/debian/changelog)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/packaging/debian/cpack_config.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/finish.cmake)
include(CPack)
