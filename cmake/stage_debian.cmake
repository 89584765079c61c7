# Run by cpack on the files it has laid out for the Debian packages.
set(packages runtime ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME}
  development ${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME})
while(packages)
  list(POP_FRONT packages component package)
  set(folder ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)

  # The loader knows the system's folders; a search path of its own would come before them.
  file(GLOB_RECURSE libraries ${folder}/lib/*.so.*)
  foreach(library IN LISTS libraries)
    if(NOT IS_SYMLINK ${library})
      file(RPATH_REMOVE FILE ${library})
    endif()
  endforeach()

  set(doc ${folder}/share/doc/${package})
  string(TIMESTAMP year %Y UTC)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${doc}/changelog
"${package} (${CPACK_PACKAGE_VERSION}) stable; urgency=medium

  * The changes stand in docs/changes of the sources.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  execute_process(COMMAND gzip -9n ${doc}/changelog COMMAND_ERROR_IS_FATAL ANY)
  file(WRITE ${doc}/copyright
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: KZMBasShared
Upstream-Contact: ${CPACK_PACKAGE_CONTACT}

Files: *
Copyright: ${year} ${CPACK_PACKAGE_VENDOR}
License: none-stated
 The sources carry no licence of their own. Ask the developers before passing
 the package on.
")
  file(CHMOD_RECURSE ${doc} FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
    DIRECTORY_PERMISSIONS ${CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
endwhile()
