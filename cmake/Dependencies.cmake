# Third-party libraries, each behind an imported target, so that the rest of the project names no path.

include(LibraryDependencies)
if(Ormel_MISSING_DEPENDENCIES)
  message(FATAL_ERROR "Ormel needs what was not found: ${Ormel_MISSING_DEPENDENCIES}.")
endif()

find_path(ASIO_INCLUDE_DIR asio.hpp)
if(NOT ASIO_INCLUDE_DIR)
  message(FATAL_ERROR "Ormel needs what was not found: asio (libasio-dev).")
endif()
add_library(Ormel::asio INTERFACE IMPORTED)
set_target_properties(Ormel::asio PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${ASIO_INCLUDE_DIR}")
# Asio takes aligned_alloc or operator new by what a file included before it; every file must decide alike.
target_compile_definitions(Ormel::asio INTERFACE ASIO_NO_DEPRECATED ASIO_DISABLE_STD_ALIGNED_ALLOC)
target_link_libraries(Ormel::asio INTERFACE Threads::Threads)
if("${ORMEL_SANITIZERS}" MATCHES "thread")
  # The thread sanitizer does not know fences; the locks around Asio's queues order the same accesses.
  target_compile_definitions(Ormel::asio INTERFACE ASIO_DISABLE_FENCED_BLOCK)
endif()

if(ORMEL_BUILD_TOOLS OR ORMEL_BUILD_EXAMPLES)
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
if(ORMEL_BUILD_EXAMPLES)
  # The C interfaces of these two serve both standard libraries; a packaged C++ library would tie us to one.
  find_package(CURL REQUIRED)
  find_package(LibXml2 REQUIRED)
endif()
