# Builds the application against an installed copy of the package, runs it with each library, and runs the programs.
# cmake -DSOURCE=... -DWORK=... -DPREFIX=... -DCOMPILER=... -DVERSION=... -P installed.cmake

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE}/installed -B ${WORK} -DCMAKE_PREFIX_PATH=${PREFIX}
  -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_BUILD_TYPE=Debug -DEXPECTED_VERSION=${VERSION})
run(${CMAKE_COMMAND} --build ${WORK})
run(${CMAKE_COMMAND} -E env ORMEL_SIMULATOR_FORGET=1 ${CMAKE_CTEST_COMMAND} --test-dir ${WORK} --output-on-failure)
