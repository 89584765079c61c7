# Starts PROGRAM on several ranks with a real launcher, which writes the rank it gave before each
# line, and checks that the program sees the same one.
find_program(launcher NAMES mpiexec.hydra mpiexec.mpich)
if(NOT launcher)
  message(FATAL_ERROR "no launcher of parallel programs: install the package mpich")
endif()
unset(ENV{MPI_RANKID})
set(ENV{KVL_IGNORE_FPE} no)
execute_process(COMMAND ${launcher} -prepend-rank -n 4 ${PROGRAM}
  OUTPUT_VARIABLE output RESULT_VARIABLE result)
string(STRIP "${output}" lines)
string(REPLACE "[" "" lines "${lines}")  # in a list, brackets would join elements
string(REPLACE "]" "" lines "${lines}")
string(REPLACE "\n" ";" lines "${lines}")
list(SORT lines)
if(NOT result EQUAL 0 OR NOT lines STREQUAL "0 0 no obeyed;1 1 no obeyed;2 2 no obeyed;3 3 no obeyed")
  message(FATAL_ERROR "${launcher} ended with ${result} and\n${output}")
endif()
