# SPDX-License-Identifier: MIT
# The sources of zorpel-generate, which the tests build too.
foreach(file families generate generator traps)
  list(APPEND generator_sources ${CMAKE_CURRENT_LIST_DIR}/${file}.cpp)
endforeach()
