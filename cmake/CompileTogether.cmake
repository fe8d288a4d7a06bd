# Compiles the sources of a target a few at a time: what they instantiate alike is then instantiated once. Worth it where
# everything is built from nothing; where one file changes at a time it is not, so a developer's preset leaves it off.
set(ORMEL_COMPILE_TOGETHER OFF CACHE STRING
  "Compile sources of one folder together, whose names must be unique then: ON, OFF, or NOT_SOURCES (not below Sources)")

# ormel_compile_together(<target> AT_ONCE <number> [SOURCES <source>...])     without SOURCES: all of them
function(ormel_compile_together target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "AT_ONCE" "SOURCES")
  if(NOT ORMEL_COMPILE_TOGETHER)
    return()
  endif()
  string(FIND "${CMAKE_CURRENT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/Sources" sources_at)
  if(ORMEL_COMPILE_TOGETHER STREQUAL "NOT_SOURCES" AND sources_at EQUAL 0)
    return()
  endif()
  if(NOT arg_SOURCES)
    get_target_property(arg_SOURCES ${target} SOURCES)
  endif()
  foreach(source IN LISTS arg_SOURCES)
    get_filename_component(folder "${source}" DIRECTORY)
    string(MAKE_C_IDENTIFIER "together_${folder}" key)
    list(APPEND "${key}" "${source}")
    list(LENGTH "${key}" count)
    math(EXPR number "(${count} - 1) / ${arg_AT_ONCE}")
    # Folders of one name in two places are two groups.
    get_filename_component(name "${folder}" ABSOLUTE)
    file(RELATIVE_PATH name "${PROJECT_SOURCE_DIR}" "${name}")
    string(MAKE_C_IDENTIFIER "${name}" name)
    set_source_files_properties("${source}" PROPERTIES UNITY_GROUP "${name}_${number}")
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # A coroutine's frame has external linkage; in an included file g++ then warns of locals of internal types.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
  endif()
endfunction()
