# Before packing: manual pages and changelogs are compressed, as Debian wants them.
file(GLOB_RECURSE documents
  ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/*
  ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/doc/*/changelog)
list(FILTER documents EXCLUDE REGEX "[.]gz$")
foreach(document ${documents})
  execute_process(COMMAND gzip -9 -n ${document} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
