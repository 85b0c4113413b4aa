# SPDX-License-Identifier: MIT
# What keeps a whole build within minutes: half of it went to reading the same large headers, and a
# good part of the rest to optimising tests that run for milliseconds.
option(ZORPEL_QUICK "Compile front ends some sources at a time, tests without optimisation" OFF)

# Programs of tests on <gtest/gtest.h>, which the first of a language's standard reads for all.
function(zorpel_quick_tests program)
  get_target_property(standard ${program} CXX_STANDARD)
  get_property(reader GLOBAL PROPERTY ZORPEL_READER_OF_GTEST_${standard})
  if(reader)
    target_precompile_headers(${program} REUSE_FROM ${reader})
  else()
    target_precompile_headers(${program} PRIVATE <gtest/gtest.h>)
    set_property(GLOBAL PROPERTY ZORPEL_READER_OF_GTEST_${standard} ${program})
  endif()
  if(ZORPEL_QUICK)
    set_target_properties(${program} PROPERTIES ZORPEL_UNOPTIMISED ON)
    target_compile_options(${program} PRIVATE $<$<CONFIG:Release>:-O0>)
  endif()
endfunction()

# A library whose sources compile together: none has a name of its own that another one has too.
function(zorpel_quick_sources library)
  set_target_properties(${library} PROPERTIES UNITY_BUILD ${ZORPEL_QUICK} UNITY_BUILD_BATCH_SIZE 16)
endfunction()
