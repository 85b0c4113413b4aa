# SPDX-License-Identifier: MIT
# The engine with the clock of stage_clock.cpp in place of its own timers: zorpel_staged, which
# tells zorpel-time the seconds of each stage. Not part of the default build's products.
#
# Works in any checkout whose timers have the interface of core/timers.h:
#   cmake -DCMAKE_PROJECT_zorpel_INCLUDE=<this file> ... adds the library to an older commit.
if(NOT TARGET zorpel_objects) # included before the engine is known: once all is
  cmake_language(EVAL CODE "cmake_language(DEFER CALL include [[${CMAKE_CURRENT_LIST_FILE}]])")
  return()
endif()
if(TARGET zorpel_staged) # the checkout has its own
  return()
endif()
get_target_property(staged_folder zorpel_objects SOURCE_DIR)
get_target_property(staged_sources zorpel_objects SOURCES)
list(REMOVE_ITEM staged_sources core/timers.cpp)
list(TRANSFORM staged_sources PREPEND ${staged_folder}/)
add_library(zorpel_staged SHARED EXCLUDE_FROM_ALL
  ${staged_sources} ${CMAKE_CURRENT_LIST_DIR}/stage_clock.cpp)
target_include_directories(zorpel_staged PRIVATE ${staged_folder} ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(zorpel_staged PRIVATE zorpel_flags)
set_target_properties(zorpel_staged PROPERTIES
  LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bench)
