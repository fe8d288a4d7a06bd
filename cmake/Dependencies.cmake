# Third-party libraries, each behind an imported target, so that the rest of the project names no path.

find_package(Threads REQUIRED)
find_package(simdjson REQUIRED)

find_path(ASIO_INCLUDE_DIR asio.hpp REQUIRED)
add_library(asio::asio INTERFACE IMPORTED)
set_target_properties(asio::asio PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${ASIO_INCLUDE_DIR}")
target_compile_definitions(asio::asio INTERFACE ASIO_NO_DEPRECATED)
target_link_libraries(asio::asio INTERFACE Threads::Threads)

find_path(UUID_INCLUDE_DIR uuid/uuid.h REQUIRED)
find_library(UUID_LIBRARY NAMES uuid)
add_library(uuid::uuid INTERFACE IMPORTED)
set_target_properties(uuid::uuid PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${UUID_INCLUDE_DIR}")
if(UUID_LIBRARY)
  # Where there is no such library the functions are part of the system's.
  target_link_libraries(uuid::uuid INTERFACE "${UUID_LIBRARY}")
endif()

find_path(UTF8PROC_INCLUDE_DIR utf8proc.h REQUIRED)
find_library(UTF8PROC_LIBRARY NAMES libutf8proc.a utf8proc REQUIRED)
add_library(utf8proc::utf8proc UNKNOWN IMPORTED)
set_target_properties(utf8proc::utf8proc PROPERTIES
  IMPORTED_LOCATION "${UTF8PROC_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${UTF8PROC_INCLUDE_DIR}"
  INTERFACE_COMPILE_DEFINITIONS UTF8PROC_STATIC)

if(ORMEL_BUILD_TOOLS)
  find_package(CLI11 REQUIRED)
endif()

if(ORMEL_BUILD_TESTS)
  if(ORMEL_GOOGLETEST_SOURCE)
    # A standard library other than the packaged one's needs GoogleTest built with it.
    set(INSTALL_GTEST OFF)
    add_subdirectory("${ORMEL_GOOGLETEST_SOURCE}" "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
  else()
    find_package(GTest REQUIRED)
  endif()
  include(GoogleTest)
endif()
if(ORMEL_BUILD_BENCHMARKS)
  find_path(RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
  find_package(benchmark REQUIRED)
endif()
