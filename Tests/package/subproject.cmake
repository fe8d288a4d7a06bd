# Makes the library a part of an application, by add_subdirectory or FetchContent, and looks at what that builds. The
# application and one source of the library are compiled; with ORMEL_PACKAGE_WHOLE in the environment everything is built
# and run, which takes as long as the library does.
# cmake -DSOURCE=... -DWORK=... -DWAY=... -DPROJECT=... -DCOMPILER=... -DVERSION=... -DSIMULATOR=... -P subproject.cmake

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE}/subproject -B ${WORK} -DWAY=${WAY} -DPROJECT=${PROJECT}
  -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_BUILD_TYPE=Debug -DORMEL_COMPILE_TOGETHER=ON -DEXPECTED_VERSION=${VERSION}
  -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON -DCMAKE_DISABLE_FIND_PACKAGE_CURL=ON
  -DCMAKE_DISABLE_FIND_PACKAGE_LibXml2=ON)

execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK} -- -t targets all OUTPUT_VARIABLE targets COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]*(-tests|ormel-chat|ormel-control|ormel-simulator|TessellaBrowserMCP|fuzz-)[^\n]*" extra "${targets}")
if(extra)
  message(FATAL_ERROR "Besides the library this is built, too: ${extra}")
endif()
string(REGEX MATCH "[^\n]*application[.]cpp[.]o" application "${targets}")
string(REGEX MATCH "[^\n]*JSONEncoding[.]cpp[.]o" part "${targets}")
if(NOT application OR NOT part)
  message(FATAL_ERROR "The application or the library is not built: ${targets}")
endif()
if("$ENV{ORMEL_PACKAGE_WHOLE}" STREQUAL "")
  run(${CMAKE_COMMAND} --build ${WORK} --target ${application} ${part})
else()
  run(${CMAKE_COMMAND} --build ${WORK})
  run(${CMAKE_COMMAND} -E env ORMEL_SIMULATOR_FORGET=1 ${WORK}/application ${SIMULATOR})
endif()
