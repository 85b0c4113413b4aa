# SPDX-License-Identifier: MIT
# The code that reads files, counts and verifies shares nothing with the engine: in ARCHIVE only
# solving.cpp calls the library, and nothing calls the engine by itself. NM lists symbols.
execute_process(COMMAND ${NM} --undefined-only ${ARCHIVE}
  OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${text}")
set(member "")
set(callers "")
foreach(line ${lines})
  if(line MATCHES "^([a-z0-9_]+)\\.c(pp|xx)\\.o:$")
    set(member ${CMAKE_MATCH_1})
  elseif(line MATCHES " (zorpelx_|ZORPEL_)[A-Za-z0-9_]+$")
    list(APPEND callers ${member})
  endif()
endforeach()
list(REMOVE_DUPLICATES callers)
if(NOT callers STREQUAL "solving")
  message(FATAL_ERROR "Callers of the library are: ${callers}")
endif()
