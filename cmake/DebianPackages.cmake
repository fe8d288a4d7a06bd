# `cpack` in the build folder makes Debian packages of what is built: libormelsdk1, libormelsdk-dev and ormel-tools.

if(NOT TARGET OrmelSDKShared OR NOT TARGET ormel-simulator OR NOT TARGET ormel-chat OR NOT ORMEL_BUILD_BRIDGE)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ormelsdk)
set(CPACK_PACKAGE_VENDOR "The Ormel authors")
set(ORMEL_PACKAGE_CONTACT "The Ormel authors <authors@example.org>" CACHE STRING "Who maintains the Debian packages")
set(CPACK_PACKAGE_CONTACT "${ORMEL_PACKAGE_CONTACT}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_OUTPUT_FILE_PREFIX "${PROJECT_BINARY_DIR}/packages")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianDocuments.cmake)
set(CPACK_ORMEL_SOURCE ${PROJECT_SOURCE_DIR})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)

set(library libormelsdk${ORMEL_ABI_VERSION})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "native client for an agent server - shared library
The library finds the agent server, starts it as a child process, speaks
JSON-RPC with it and gives a program typed conversations and management calls.

This package has the shared library that programs are linked with.")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY =)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libormelsdk-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${library} (= ${PROJECT_VERSION}-1), libsimdjson-dev, libutf8proc-dev, uuid-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS ormel-tools)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "native client for an agent server - development files
The library finds the agent server, starts it as a child process, speaks
JSON-RPC with it and gives a program typed conversations and management calls.

This package has the headers, the static library, and what CMake and
pkg-config need to know.")

# The bridge goes with the tools.
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME ormel-tools)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAMS_DESCRIPTION "native client for an agent server - programs
ormel-chat talks with an agent in the terminal, ormel-control manages what a
server keeps and offers, ormel-doctor tests a set-up, ormel-simulator plays the
server, and TessellaBrowserMCP gives an agent the browser of another
program.")

set(CPACK_COMPONENTS_ALL library development tools bridge)
include(CPack)
cpack_add_component_group(library)
cpack_add_component_group(development)
cpack_add_component_group(programs)
cpack_add_component(library GROUP library)
cpack_add_component(development GROUP development)
cpack_add_component(tools GROUP programs)
cpack_add_component(bridge GROUP programs)
