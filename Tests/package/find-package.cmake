# Has a project call find_package as each row of find-package/rows.json says, and looks at its status and words.
# cmake -DSOURCE=... -DWORK=... -DPREFIX=... -DCOMPILER=... -P find-package.cmake

file(READ ${SOURCE}/find-package/rows.json rows)
string(JSON count LENGTH "${rows}")
math(EXPR last "${count} - 1")
set(failures "")
file(REMOVE_RECURSE ${WORK})

# One build folder, so that the compiler is looked at once; what a row has found is forgotten before the next.
foreach(index RANGE ${last})
  string(JSON row GET "${rows}" ${index})
  string(JSON name GET "${row}" name)
  string(JSON calls GET "${row}" calls)
  string(JSON status ERROR_VARIABLE none GET "${row}" status)
  if(none)
    set(status 0)
  endif()
  execute_process(
    COMMAND ${CMAKE_COMMAND} -G Ninja -S ${SOURCE}/find-package -B ${WORK}
      -U "Ormel_*" -U "simdjson_*" -U "UUID_*" -U "UTF8PROC_*" -U "Threads_*" -U "CMAKE_HAVE_*"
      -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_CXX_COMPILER=${COMPILER} "-DCALLS=${calls}"
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL status)
    string(APPEND failures "${name}: status ${result}, not ${status}\n${output}\n")
  endif()
  # CMake breaks the lines of messages.
  string(REGEX REPLACE "\n +" " " flat "${output}")
  foreach(kind says not)
    string(JSON number ERROR_VARIABLE none LENGTH "${row}" ${kind})
    if(none)
      continue()
    endif()
    math(EXPR end "${number} - 1")
    foreach(at RANGE ${end})
      string(JSON words GET "${row}" ${kind} ${at})
      string(FIND "${flat}" "${words}" found)
      if(kind STREQUAL "says" AND found EQUAL -1)
        string(APPEND failures "${name}: \"${words}\" is not in\n${output}\n")
      elseif(kind STREQUAL "not" AND NOT found EQUAL -1)
        string(APPEND failures "${name}: \"${words}\" is in\n${output}\n")
      endif()
    endforeach()
  endforeach()
endforeach()
if(failures)
  message(FATAL_ERROR "${failures}")
endif()
message(STATUS "${count} rows")
