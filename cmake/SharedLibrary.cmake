# The shared library is linked from the objects of the static one, so that nothing is compiled twice. Their names are
# visible then, and a version script says which of them the shared library lets out; without a shared library they stay
# hidden. `Ormel::OrmelSDK` is the one that BUILD_SHARED_LIBS asks for.

set_target_properties(OrmelSDK PROPERTIES EXPORT_NAME OrmelSDKStatic)
if(ORMEL_SHARED)
  set_target_properties(OrmelSDK PROPERTIES CXX_VISIBILITY_PRESET default)
  # By ELF's rules a program could replace what is visible. Nothing here is meant to be replaced, so inlining goes on.
  target_compile_options(OrmelSDK PRIVATE -fno-semantic-interposition)

  set(exports ${CMAKE_CURRENT_BINARY_DIR}/exports.map)
  set(headers ${PROJECT_SOURCE_DIR}/cmake/public-headers.txt)
  set(script ${PROJECT_SOURCE_DIR}/cmake/ExportedNames.cmake)
  add_custom_command(OUTPUT ${exports}
    COMMAND ${CMAKE_COMMAND} -DARCHIVE=$<TARGET_FILE:OrmelSDK> -DHEADERS=${headers} -DSOURCES=${PROJECT_SOURCE_DIR}/Sources
      -DNM=${CMAKE_NM} -DABI=${ORMEL_ABI_VERSION} -DOUTPUT=${exports} -P ${script}
    DEPENDS OrmelSDK $<TARGET_FILE:OrmelSDK> ${headers} ${script}
    COMMENT "Listing what the shared library exports"
    VERBATIM)
  add_library(OrmelSDKShared SHARED ${exports})
  add_library(Ormel::OrmelSDKShared ALIAS OrmelSDKShared)
  set_target_properties(OrmelSDKShared PROPERTIES
    OUTPUT_NAME OrmelSDK
    LINKER_LANGUAGE CXX
    SOVERSION ${ORMEL_ABI_VERSION}
    VERSION ${ORMEL_ABI_VERSION}.${PROJECT_VERSION}
    LINK_DEPENDS "${exports};$<TARGET_FILE:OrmelSDK>")
  target_include_directories(OrmelSDKShared INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/Sources> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(OrmelSDKShared INTERFACE cxx_std_20)
  # A packaged static library is seldom fit to be part of a shared one.
  find_library(Ormel_UTF8PROC_SHARED_LIBRARY NAMES utf8proc REQUIRED)
  mark_as_advanced(Ormel_UTF8PROC_SHARED_LIBRARY)
  if(APPLE)
    target_link_options(OrmelSDKShared PRIVATE -Wl,-force_load,$<TARGET_FILE:OrmelSDK>)
  else()
    target_link_options(OrmelSDKShared PRIVATE -Wl,--version-script=${exports} -Wl,--no-undefined)
    target_link_libraries(OrmelSDKShared PRIVATE
      -Wl,--whole-archive $<BUILD_INTERFACE:$<TARGET_FILE:OrmelSDK>> -Wl,--no-whole-archive)
  endif()
  # By its file: of a target the installed package would want that it is there, too.
  set(simdjson simdjson::simdjson)
  get_target_property(type simdjson::simdjson TYPE)
  if(NOT type STREQUAL "INTERFACE_LIBRARY")
    set(simdjson $<TARGET_LINKER_FILE:simdjson::simdjson>)
  endif()
  target_link_libraries(OrmelSDKShared PRIVATE
    ${simdjson} $<BUILD_INTERFACE:Ormel::uuid> $<BUILD_INTERFACE:Threads::Threads> ${Ormel_UTF8PROC_SHARED_LIBRARY})
endif()

if(BUILD_SHARED_LIBS)
  add_library(Ormel::OrmelSDK ALIAS OrmelSDKShared)
else()
  add_library(Ormel::OrmelSDK ALIAS OrmelSDK)
endif()
