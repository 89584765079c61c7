# Views of values for debuggers. gdb loads a script by itself that has the name of the library's file
# and -gdb.py, and lies beside it. For a library under /usr it looks in a folder of its own instead,
# which it trusts unasked and where the loader's cache does not stumble over it; a staging folder that
# ends in /usr counts as that.
set(views ${PROJECT_SOURCE_DIR}/debugger/kzm_gdb.py)
file(GENERATE OUTPUT $<TARGET_FILE:KZMBasShared>-gdb.py INPUT ${views})
if(WIN32)
  set(beside ${CMAKE_INSTALL_BINDIR})
else()
  set(beside ${CMAKE_INSTALL_LIBDIR})
endif()
install(CODE "
  set(folder \"${beside}\")
  if(CMAKE_INSTALL_PREFIX MATCHES \"/usr/?$\")
    set(folder \"share/gdb/auto-load/usr/${beside}\")
  endif()
  file(INSTALL \"${views}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/\${folder}\" TYPE FILE
    RENAME \"$<TARGET_FILE_NAME:KZMBasShared>-gdb.py\")")
install(FILES debugger/KZMBasShared.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/KZMBasShared)

# Compilers leave the fields of classes whose instances the library holds to its own debugging
# information, which a released library does not carry.
target_compile_options(KZMBasShared INTERFACE
  $<INSTALL_INTERFACE:$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-femit-class-debug-always>>
  $<INSTALL_INTERFACE:$<$<COMPILE_LANG_AND_ID:CXX,Clang>:-fstandalone-debug>>)
