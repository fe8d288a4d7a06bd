# The installed files, in three parts: the library with its headers and what `find_package(Ormel)` and pkg-config read, the
# bridge, and the tools. A part that is not built is not installed, and its targets file with it: the package finds the
# components whose files are there.

include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Ormel)

# The library.
file(STRINGS ${PROJECT_SOURCE_DIR}/cmake/public-headers.txt public_headers REGEX "^[^#]")
foreach(header IN LISTS public_headers)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/Sources/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder}
    COMPONENT development)
endforeach()
install(TARGETS OrmelSDK EXPORT OrmelStaticTargets ARCHIVE COMPONENT development)
install(EXPORT OrmelStaticTargets NAMESPACE Ormel:: DESTINATION ${package_folder} COMPONENT development)
if(TARGET OrmelSDKShared)
  install(TARGETS OrmelSDKShared EXPORT OrmelSharedTargets
    LIBRARY COMPONENT library NAMELINK_COMPONENT development)
  install(EXPORT OrmelSharedTargets NAMESPACE Ormel:: DESTINATION ${package_folder} COMPONENT development)
endif()

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/OrmelConfig.cmake.in OrmelConfig.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(OrmelConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OrmelConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/OrmelConfigVersion.cmake
  ${PROJECT_SOURCE_DIR}/cmake/LibraryDependencies.cmake DESTINATION ${package_folder} COMPONENT development)

# With a shared library, only a program that is linked statically needs to know what the library is linked with.
set(pkg_config_private "")
if(TARGET OrmelSDKShared)
  set(pkg_config_private ".private")
endif()
set(pkg_config_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(pkg_config_prefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH pkg_config_prefix /prefix/${pkg_config_folder} /prefix)
  string(REGEX REPLACE "/$" "" pkg_config_prefix "\${pcfiledir}/${pkg_config_prefix}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/ormelsdk.pc.in ormelsdk.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ormelsdk.pc DESTINATION ${pkg_config_folder} COMPONENT development)

# The programs, each with its manual page.
function(ormel_install_programs component targets_file)
  foreach(program IN LISTS ARGN)
    if(TARGET ${program})
      install(TARGETS ${program} EXPORT ${targets_file} RUNTIME COMPONENT ${component})
      install(FILES ${PROJECT_SOURCE_DIR}/docs/man/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT ${component})
      set(some YES)
    endif()
  endforeach()
  if(some)
    install(EXPORT ${targets_file} NAMESPACE Ormel:: DESTINATION ${package_folder} COMPONENT ${component})
  endif()
endfunction()

ormel_install_programs(bridge OrmelBridgeTargets TessellaBrowserMCP)
ormel_install_programs(tools OrmelToolsTargets ormel-chat ormel-control ormel-doctor ormel-simulator)
