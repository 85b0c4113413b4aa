# After packing: the maintainer scripts that CPack writes for shared libraries only call ldconfig,
# which the package's trigger does already.
foreach(package ${CPACK_PACKAGE_FILES})
  if(NOT package MATCHES "/libzorpel1_[^/]*[.]deb$")
    continue()
  endif()
  set(tree ${package}.tree)
  file(REMOVE_RECURSE ${tree})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${tree} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${tree})
endforeach()
