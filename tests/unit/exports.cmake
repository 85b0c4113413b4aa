# SPDX-License-Identifier: MIT
# LIBRARY exports the three entry points and nothing else, and its soname ends in MAJOR.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "[0-9a-f]+ ([A-Za-z]) " "\\1 " symbols "${symbols}")
set(wanted "T ZORPEL_2WayRefine\nT ZORPEL_PartRecursive\nT ZORPEL_PartRecursiveInternal\n")
if(NOT symbols STREQUAL wanted)
  message(FATAL_ERROR "exported:\n${symbols}wanted:\n${wanted}")
endif()
execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY}
  OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
if(NOT headers MATCHES "SONAME +libzorpel\\.so\\.${MAJOR}\n")
  message(FATAL_ERROR "another soname than libzorpel.so.${MAJOR}:\n${headers}")
endif()
