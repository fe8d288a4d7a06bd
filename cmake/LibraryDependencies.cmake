# The libraries that the library itself is linked with; also read by the installed package.

find_package(Threads REQUIRED)
find_package(simdjson REQUIRED)

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
