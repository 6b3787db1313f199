# Run by CPack behind packing. It gives a package with a library scripts that call ldconfig; the trigger in the
# package does that, once for all packages of a run.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(package MATCHES "/lib[^/]*-[0-9]+_[^/]*$")
    set(tree ${CPACK_TOPLEVEL_DIRECTORY}/without-scripts)
    file(REMOVE_RECURSE ${tree})
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${tree} ${package}
      OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${tree})
  endif()
endforeach()
