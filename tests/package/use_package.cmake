# Follows docs/engine.md without the libraries of the control: configures and builds the engine alone,
# installs it below WORK, builds the consumer on what was installed and compares its output.
# Arguments: SOURCE, the project's folder; WORK, a folder for everything that is made; COMPILER.

set(consumer "${SOURCE}/examples/engine")
set(prefix "${WORK}/prefix")

function(run)
  execute_process(COMMAND ${ARGV} WORKING_DIRECTORY "${SOURCE}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${prefix}" "${WORK}/consumer")

run("${CMAKE_COMMAND}" --preset engine -B "${WORK}/engine" -D "CMAKE_CXX_COMPILER=${COMPILER}"
    -D CMAKE_DISABLE_FIND_PACKAGE_Qt6=ON -D CMAKE_DISABLE_FIND_PACKAGE_SQLite3=ON
    -D CMAKE_DISABLE_FIND_PACKAGE_GTest=ON)
run("${CMAKE_COMMAND}" --build "${WORK}/engine" --parallel 2)
run("${CMAKE_COMMAND}" --install "${WORK}/engine" --prefix "${prefix}")

run("${CMAKE_COMMAND}" -S "${consumer}" -B "${WORK}/consumer" -G Ninja
    -D "CMAKE_CXX_COMPILER=${COMPILER}" -D "CMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK}/consumer")
execute_process(COMMAND "${WORK}/consumer/beam" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
file(READ "${consumer}/expected_output.txt" expected)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "The consumer printed\n${output}instead of\n${expected}")
endif()
