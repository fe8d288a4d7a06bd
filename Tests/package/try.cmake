# Installs the build into a folder of its own, then builds and runs an application against that, and runs the
# installed ormel-control as far as it needs no server.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${WORK}/prefix
  -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${WORK}/build/application)

if(HAS_CONTROL)
  run(${WORK}/prefix/bin/ormel-control completion bash OUTPUT_QUIET)
endif()
