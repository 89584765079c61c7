# cmake -D BUILD=... -D SOURCE=... -D FOLDER=... -D VERSION=... -D GDB=... [-D TOOLCHAIN=...] -P check.cmake
# Installs the built library and proves with a client project that the install tree suffices.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_VARIABLE text)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\n${text}")
  endif()
endfunction()

file(REMOVE_RECURSE ${FOLDER})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${FOLDER}/installed)

set(configure ${CMAKE_COMMAND} -S ${SOURCE} -G Ninja -DCMAKE_PREFIX_PATH=${FOLDER}/installed
  -DCMAKE_CXX_COMPILER=${COMPILER})
if(TOOLCHAIN)
  list(APPEND configure -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
endif()
run(${configure} -B ${FOLDER}/build -DCMAKE_BUILD_TYPE=Debug -DWANTED=${VERSION})
run(${CMAKE_COMMAND} --build ${FOLDER}/build)
if(TOOLCHAIN)
  string(REPLACE "/" "\\" folder "Z:${FOLDER}/installed/bin")
  set(ENV{WINEPATH} ${folder})
  execute_process(COMMAND ${EMULATOR} ${FOLDER}/build/consumer.exe
    OUTPUT_VARIABLE text RESULT_VARIABLE status)
else()
  execute_process(COMMAND ${FOLDER}/build/consumer OUTPUT_VARIABLE text RESULT_VARIABLE status)
endif()
string(STRIP "${text}" text)
if(NOT text STREQUAL "700 same version" OR NOT status EQUAL 0)
  message(FATAL_ERROR "the client printed '${text}' and ended with ${status}")
endif()

# The installed views, which gdb finds by itself, show what the client is compiled with.
set(views "table: omi_UintTable of length 3 = {[7] = 7, [30] = 0, [4000000000] = 0}")
if(NOT TOOLCHAIN)
  execute_process(COMMAND ${GDB} -nx -batch -iex "add-auto-load-safe-path ${FOLDER}/installed"
    -ex "break KZMBasShared_finalize" -ex run -ex "up" -ex "printf \"table: \"" -ex "output table"
    ${FOLDER}/build/consumer OUTPUT_VARIABLE text ERROR_VARIABLE text)
  string(FIND "${text}" "${views}" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "gdb did not show '${views}':\n${text}")
  endif()
endif()
if(NOT EXISTS ${FOLDER}/installed/share/KZMBasShared/KZMBasShared.natvis)
  message(FATAL_ERROR "the views for Visual Studio are not installed")
endif()

foreach(wrong 99.0 ${TOO_NEW})
  execute_process(COMMAND ${configure} -B ${FOLDER}/refused -DWANTED=${wrong}
    RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_VARIABLE text)
  if(status EQUAL 0 OR NOT text MATCHES "version")
    message(FATAL_ERROR "version ${wrong} was not refused:\n${text}")
  endif()
endforeach()
message(STATUS "the install tree suffices")
