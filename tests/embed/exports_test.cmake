# LIBRARY exports routines of the zorpelx_ family and its version node, nothing else; and its soname
# carries the major version.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE text
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${text}")
list(LENGTH lines count)
if(count LESS 10)
  message(FATAL_ERROR "${LIBRARY} exports too little:\n${text}")
endif()
foreach(line ${lines})
  if(NOT line MATCHES " T zorpelx_[a-z_]+@@ZORPELX_1$" AND NOT line MATCHES " A ZORPELX_1")
    message(FATAL_ERROR "${LIBRARY} exports: ${line}")
  endif()
endforeach()
execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
if(NOT text MATCHES "SONAME +libzorpelx[.]so[.]${MAJOR}\n")
  message(FATAL_ERROR "${LIBRARY} has another soname:\n${text}")
endif()
