# The libraries that the static library is linked with; also read by the installed package. Missing ones are listed
# in Ormel_MISSING_DEPENDENCIES. The targets have names of their own: other packages have a `uuid::uuid`, too, and each
# its own idea of it.

set(Ormel_MISSING_DEPENDENCIES "")

if(NOT TARGET Threads::Threads)
  find_package(Threads QUIET)
  if(NOT TARGET Threads::Threads)
    list(APPEND Ormel_MISSING_DEPENDENCIES "Threads")
  endif()
endif()

if(NOT TARGET simdjson::simdjson)
  find_package(simdjson QUIET)
  if(NOT TARGET simdjson::simdjson)
    list(APPEND Ormel_MISSING_DEPENDENCIES "simdjson (libsimdjson-dev)")
  endif()
endif()

if(NOT TARGET Ormel::uuid)
  find_path(Ormel_UUID_INCLUDE_DIR uuid/uuid.h)
  find_library(Ormel_UUID_LIBRARY NAMES uuid)
  mark_as_advanced(Ormel_UUID_INCLUDE_DIR Ormel_UUID_LIBRARY)
  # On Apple's systems the functions are part of the system's library.
  if(Ormel_UUID_INCLUDE_DIR AND (Ormel_UUID_LIBRARY OR APPLE))
    add_library(Ormel::uuid INTERFACE IMPORTED)
    set_target_properties(Ormel::uuid PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${Ormel_UUID_INCLUDE_DIR}")
    if(Ormel_UUID_LIBRARY)
      target_link_libraries(Ormel::uuid INTERFACE "${Ormel_UUID_LIBRARY}")
    endif()
  else()
    list(APPEND Ormel_MISSING_DEPENDENCIES "uuid (uuid-dev)")
  endif()
endif()

if(NOT TARGET Ormel::utf8proc)
  find_path(Ormel_UTF8PROC_INCLUDE_DIR utf8proc.h)
  find_library(Ormel_UTF8PROC_LIBRARY NAMES libutf8proc.a utf8proc)
  mark_as_advanced(Ormel_UTF8PROC_INCLUDE_DIR Ormel_UTF8PROC_LIBRARY)
  if(Ormel_UTF8PROC_INCLUDE_DIR AND Ormel_UTF8PROC_LIBRARY)
    add_library(Ormel::utf8proc UNKNOWN IMPORTED)
    set_target_properties(Ormel::utf8proc PROPERTIES
      IMPORTED_LOCATION "${Ormel_UTF8PROC_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${Ormel_UTF8PROC_INCLUDE_DIR}"
      INTERFACE_COMPILE_DEFINITIONS UTF8PROC_STATIC)
  else()
    list(APPEND Ormel_MISSING_DEPENDENCIES "utf8proc (libutf8proc-dev)")
  endif()
endif()

list(JOIN Ormel_MISSING_DEPENDENCIES ", " Ormel_MISSING_DEPENDENCIES)
