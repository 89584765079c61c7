# Functions that every target of the project is made with.

# Language level, warnings and sanitizers, for everything that is compiled here.
function(kzm_compile_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor $<$<BOOL:${KZM_WERROR}>:-Werror>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # This release sees overlapping copies in every `"text" + std::string` that it inlines.
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(${target} PRIVATE -Wno-sign-conversion)  # no part of it in GCC's C++
  endif()
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Without these, 32-bit results would differ from those of the 64-bit build in the last bits.
    target_compile_options(${target} PRIVATE -msse2 -mfpmath=sse -mstackrealign)
  endif()
  if(KZM_SANITIZE)
    # Instrumented code makes this warning see paths that do not exist.
    target_compile_options(${target} PRIVATE
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
      -fsanitize=${KZM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${KZM_SANITIZE})
  endif()
endfunction()

# kzm_library(KZMBasX EXPORT_NAME X HEADERS dirs... INCLUDE dirs... LINK libs...): a shared library
# of the project. HEADERS are the folders of its own interface, INCLUDE all folders it is seen with.
# Its sources are added with kzm_sources; they are compiled once, as objects, because on Windows
# the list of exported names is made from the objects before the library is linked.
function(kzm_library name)
  cmake_parse_arguments(arg "" "EXPORT_NAME" "HEADERS;INCLUDE;LINK" ${ARGN})
  add_library(${name}_objects OBJECT)
  kzm_compile_defaults(${name}_objects)
  set_target_properties(${name}_objects PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN OFF)
  add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
  add_library(KZMBas::${arg_EXPORT_NAME} ALIAS ${name})
  set_target_properties(${name} PROPERTIES
    EXPORT_NAME ${arg_EXPORT_NAME} LINKER_LANGUAGE CXX INSTALL_RPATH "$ORIGIN"
    VERSION ${PROJECT_VERSION} SOVERSION ${kzm_interface_version})
  kzm_compile_defaults(${name})
  foreach(dir IN LISTS arg_INCLUDE)
    target_include_directories(${name}_objects PRIVATE ${dir})
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${dir}>)
  endforeach()
  target_include_directories(${name} PUBLIC $<INSTALL_INTERFACE:${kzm_include_dir}>)
  target_link_libraries(${name}_objects PRIVATE ${arg_LINK})
  target_link_libraries(${name} PUBLIC ${arg_LINK})
  if(WIN32)
    set_target_properties(${name} PROPERTIES PREFIX "")
  else()
    if(NOT KZM_SANITIZE MATCHES fuzzer)  # whose runtime is in the program
      target_link_options(${name} PRIVATE -Wl,--no-undefined)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # A unique symbol, such as a template's static member, would keep the library from unloading.
      target_compile_options(${name}_objects PRIVATE -fno-gnu-unique)
    endif()
    if(KZM_DEBUG_INFO)
      # Types are asked for; following variables through optimised code would cost time.
      target_compile_options(${name}_objects PRIVATE -g -fno-var-tracking)
    endif()
  endif()
  kzm_exports(${name} HEADERS ${arg_HEADERS} INCLUDE ${arg_INCLUDE} LINK ${arg_LINK})
endfunction()

# What a library exports follows from the marks in its public headers and is said to the linker by
# a generated file. Beside it are the readable list, <library>.txt, and <library>.instances.h with the
# declared instances of templates as KZM_INSTANCES(X).
function(kzm_exports name)
  cmake_parse_arguments(arg "" "" "HEADERS;INCLUDE;LINK" ${ARGN})
  set(folder ${PROJECT_BINARY_DIR}/exports)
  set(list ${folder}/${name}.txt)
  set(instances ${folder}/${name}.instances.h)
  if(WIN32)
    set(link_file ${folder}/${name}.def)
    set(option ${link_file})
    set(windows --windows)
  else()
    set(link_file ${folder}/${name}.map)
    set(option -Wl,--version-script=${link_file})
    set(windows)
  endif()
  file(GENERATE OUTPUT ${folder}/${name}.objects
    CONTENT "$<JOIN:$<TARGET_OBJECTS:${name}_objects>,\n>\n")
  set(includes "$<TARGET_PROPERTY:${name}_objects,INCLUDE_DIRECTORIES>")
  list(TRANSFORM arg_HEADERS PREPEND "--headers=" OUTPUT_VARIABLE headers)
  add_custom_command(OUTPUT ${link_file} ${list} ${instances}
    COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/cmake/exported_names.py
      --library ${name} --compiler ${CMAKE_CXX_COMPILER} --nm ${CMAKE_NM} ${windows}
      "--include=$<JOIN:${includes},;--include=>" ${headers}
      --objects ${folder}/${name}.objects --link ${link_file} --names ${list}
      --instances ${instances}
    DEPENDS ${name}_objects $<TARGET_OBJECTS:${name}_objects>
      ${PROJECT_SOURCE_DIR}/cmake/exported_names.py
    COMMENT "Exports of ${name}" COMMAND_EXPAND_LISTS VERBATIM)
  add_custom_target(${name}_exports DEPENDS ${link_file})
  add_dependencies(${name} ${name}_exports)
  target_link_options(${name} PRIVATE ${option})
  set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${link_file})
endfunction()

# kzm_sources(KZMBasX files...): adds sources of the calling folder to a library.
function(kzm_sources name)
  list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  target_sources(${name}_objects PRIVATE ${ARGN})
endfunction()

# kzm_test(name files...): a GoogleTest program on the library. What is tested lies in the library;
# the program's own code is compiled for a short build: fully optimised it takes twice the time, and
# optimised under sanitizers four times.
function(kzm_test name)
  list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  add_executable(${name} ${ARGN})
  kzm_compile_defaults(${name})
  if(KZM_SANITIZE)
    target_compile_options(${name} PRIVATE -O0)
  else()
    target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
  target_link_libraries(${name} PRIVATE KZMBas::Shared kzm_test_support GTest::gtest_main)
  kzm_register_test(${name})
endfunction()

# Natively every case of a GoogleTest program is a ctest entry of its own. Under Wine, where each
# start takes seconds, the program is one.
function(kzm_register_test name)
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${name} COMMAND ${name})
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
  endif()
endfunction()

# kzm_bench(name files...): a Google Benchmark program, linked with the shared library as users do,
# and with every peer that was found.
function(kzm_bench name)
  list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  add_executable(${name} ${ARGN})
  kzm_compile_defaults(${name})
  target_link_libraries(${name} PRIVATE KZMBas::Shared kzm_bench_support benchmark::benchmark_main)
endfunction()
