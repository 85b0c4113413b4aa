# SPDX-License-Identifier: MIT
# Random levels against plain twins, and the properties that refiners and matchings must keep.
foreach(model fm_twin kway_twin coarsen_twin properties coarsen_properties kway_properties)
  add_executable(${model}_test
    ${CMAKE_CURRENT_LIST_DIR}/${model}_test.cpp $<TARGET_OBJECTS:exit_watch>)
  target_include_directories(${model}_test PRIVATE ${PROJECT_SOURCE_DIR}/tests/unit)
  target_link_libraries(${model}_test PRIVATE zorpel_internal GTest::gtest_main)
  if(NOT model STREQUAL "fm_twin") # runs for minutes where it is not optimised
    zorpel_quick_tests(${model}_test)
  endif()
  gtest_discover_tests(${model}_test
    DISCOVERY_MODE PRE_TEST PROPERTIES LABELS model TIMEOUT 600)
endforeach()
